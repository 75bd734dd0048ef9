# What compiler and linker can do against damage from a memory error, where they know it. Not together with
# sanitizers, which look for the same errors and better.
include_guard(GLOBAL)
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

set(krutein_hardening_compile "")
set(krutein_hardening_link "")
if(NOT KRUTEIN_SANITIZE)
  foreach(flag -fstack-protector-strong -fcf-protection=full)
    string(MAKE_C_IDENTIFIER "krutein_knows${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      list(APPEND krutein_hardening_compile ${flag})
    endif()
  endforeach()
  # Checks the sizes of buffers where the optimiser can tell them: without optimisation it only warns.
  list(APPEND krutein_hardening_compile $<$<NOT:$<CONFIG:Debug,>>:-U_FORTIFY_SOURCE>
                                        $<$<NOT:$<CONFIG:Debug,>>:-D_FORTIFY_SOURCE=2>)
  if(NOT APPLE)
    foreach(flag relro now noexecstack)
      check_linker_flag(CXX "LINKER:-z,${flag}" krutein_linker_knows_${flag})
      if(krutein_linker_knows_${flag})
        list(APPEND krutein_hardening_link "LINKER:-z,${flag}")
      endif()
    endforeach()
  endif()
endif()

function(krutein_harden target)
  target_compile_options(${target} PRIVATE ${krutein_hardening_compile})
  target_link_options(${target} PRIVATE ${krutein_hardening_link})
endfunction()
