# Installs what BUILD has built and then moves it to WORK/prefix, since it has to work anywhere.

file(REMOVE_RECURSE "${WORK}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/before"
  OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${WORK}/before" "${WORK}/prefix")
