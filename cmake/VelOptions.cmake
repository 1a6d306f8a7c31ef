# The options of the project.

# If the library is a subproject, the parent project chooses how it is built.
if(PROJECT_IS_TOP_LEVEL)
  option(BUILD_SHARED_LIBS "Build a shared library" ON)
endif()

option(VEL_HOST "Build the program launchscreen" ${PROJECT_IS_TOP_LEVEL})
option(VEL_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(VEL_CHECKS "Add the checks of the sources (format, tidy, ...) to the tests" OFF)
option(VEL_INSTALL "Add the install rules" ${PROJECT_IS_TOP_LEVEL})
option(VEL_EXAMPLES "Build the examples" OFF)
option(VEL_FUZZ "Build the fuzzers; requires Clang" OFF)
option(VEL_BENCHMARKS "Build the benchmarks" OFF)
option(VEL_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)

set(VEL_SANITIZERS "" CACHE STRING "Sanitizers, in the form that -fsanitize takes")
option(VEL_COVERAGE "Instrument the code for coverage" OFF)
set(VEL_GTEST_SOURCE "" CACHE PATH
  "The source folder of GoogleTest, for a build with another C++ standard library than the system's")
