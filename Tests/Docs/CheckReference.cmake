# Fails when doxygen has a warning on a public header, or when one is missing in the reference. Run with cmake -P, with
#   ROOT    the project's folder
#   OUTPUT  a folder to write to
file(READ "${ROOT}/Doxyfile" settings)
file(GLOB_RECURSE headers RELATIVE "${ROOT}" "${ROOT}/Common/*.h" "${ROOT}/Module/*.h")
foreach(header IN LISTS headers)
  file(STRINGS "${ROOT}/${header}" exported REGEX "^[^/]*KRUTEIN_API ")
  string(FIND "${settings}" " ${header}" place)
  if(exported AND place EQUAL -1)
    message(SEND_ERROR "${header} exports something and is not in Doxyfile")
  endif()
endforeach()

file(MAKE_DIRECTORY "${OUTPUT}")
file(WRITE "${OUTPUT}/Doxyfile" "${settings}OUTPUT_DIRECTORY = ${OUTPUT}\n")
execute_process(COMMAND doxygen "${OUTPUT}/Doxyfile" WORKING_DIRECTORY "${ROOT}" RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "doxygen: ${failed}")
endif()
if(NOT EXISTS "${OUTPUT}/SyncFactory_8h.html")
  message(FATAL_ERROR "doxygen made no page for SyncFactory.h")
endif()
