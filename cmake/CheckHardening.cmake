# Fails when what is shipped was not built as KruteinHardening.cmake says. Run with cmake -P, with
#   READELF   the program
#   FILES     the library and programs
#   OBJECTS   the object files that the library is made of
function(read_elf result option file)
  execute_process(COMMAND ${READELF} -W ${option} "${file}" OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(expect file text pattern what)
  if(NOT text MATCHES "${pattern}")
    message(SEND_ERROR "${file}: ${what}")
  endif()
endfunction()

foreach(file IN LISTS FILES)
  read_elf(header -h "${file}")
  expect("${file}" "${header}" "Type: +DYN" "not position-independent")
  read_elf(segments -l "${file}")
  expect("${file}" "${segments}" "GNU_RELRO" "relocations stay writable")
  expect("${file}" "${segments}" "GNU_STACK[^\n]* RW " "the stack is executable")
  read_elf(dynamic -d "${file}")
  expect("${file}" "${dynamic}" "BIND_NOW|Flags: NOW" "symbols are bound late, into memory that stays writable")
  read_elf(symbols --dyn-syms "${file}")
  expect("${file}" "${symbols}" "UND __stack_chk_fail" "no stack protector")
  expect("${file}" "${symbols}" "UND __[a-z]+_chk" "no checked function of the system is called")
endforeach()

# In the linked file the property is missing where the system's own start-up code (crti.o) does without it.
foreach(object IN LISTS OBJECTS)
  read_elf(notes -n "${object}")
  expect("${object}" "${notes}" "IBT, SHSTK" "jumps and returns are not protected")
endforeach()
