# Installs the build in BUILD somewhere, then moves what was installed to INSTALLED.
set(first "${INSTALLED}-first")
file(REMOVE_RECURSE "${first}" "${INSTALLED}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD}" --prefix "${first}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${first}" "${INSTALLED}")
