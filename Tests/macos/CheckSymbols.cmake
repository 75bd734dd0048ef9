# Fails when the library needs a function that macOS 10.9 might lack. Run with cmake -P, with
#   NM       the program that lists symbols
#   OBJECTS  a file that names the library's object files
#   ALLOWED  a file that names the functions
file(STRINGS "${OBJECTS}" objects)
execute_process(COMMAND ${NM} --extern-only --format=posix ${objects}
  OUTPUT_VARIABLE text RESULT_VARIABLE failed)
if(failed OR NOT objects)
  message(FATAL_ERROR "cannot read the symbols of ${OBJECTS}")
endif()
file(STRINGS "${ALLOWED}" allowed REGEX "^[^#]")

string(REPLACE "\n" ";" lines "${text}")
set(needed "")
set(defined "")
foreach(line IN LISTS lines)
  if(line MATCHES "^([^ :]+) [Uw] ")
    list(APPEND needed ${CMAKE_MATCH_1})
  elseif(line MATCHES "^([^ :]+) [A-Z] ")
    list(APPEND defined ${CMAKE_MATCH_1})
  endif()
endforeach()
# The C library here checks lengths under names of its own.
list(TRANSFORM needed REPLACE "^__([a-z]+)_chk$" "\\1")
list(REMOVE_DUPLICATES needed)
list(REMOVE_DUPLICATES defined)
list(LENGTH needed count)
if(count LESS 100)
  message(FATAL_ERROR "only ${count} symbols: this is not the library")
endif()

# Of C, what is listed; of C++, all but what libc++ got later.
set(later "10filesystem|align_val_t|bad_optional_access|bad_variant_access|bad_any_cast|shared_mutex|shared_timed_mutex|uncaught_exceptions|St3pmr|8to_chars|10from_chars")
set(strangers ${needed})
list(REMOVE_ITEM strangers ${defined})
list(REMOVE_ITEM strangers ${allowed})
list(FILTER strangers EXCLUDE REGEX "^_Z")
list(FILTER strangers EXCLUDE REGEX "^__gcov_")  # of builds that count lines
set(all ${needed} ${defined})
list(FILTER all INCLUDE REGEX "^_Z.*(${later})")
foreach(symbol IN LISTS strangers all)
  message(SEND_ERROR "${symbol}: has macOS 10.9 that? (${ALLOWED})")
endforeach()
