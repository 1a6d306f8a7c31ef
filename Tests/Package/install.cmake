# Installs the build in BUILD and then moves it to WORK/prefix, to test that an installed library
# can be moved.

file(REMOVE_RECURSE "${WORK}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/before"
  OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${WORK}/before" "${WORK}/prefix")
