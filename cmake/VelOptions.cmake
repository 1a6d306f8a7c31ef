# What can be chosen when the project is configured.

# A project that this one is part of decides for itself.
if(PROJECT_IS_TOP_LEVEL)
  option(BUILD_SHARED_LIBS "Build the library as a shared one" ON)
endif()

option(VEL_HOST "Build the launchscreen program" ${PROJECT_IS_TOP_LEVEL})
option(VEL_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(VEL_CHECKS "Add the checks of the sources (format, tidy, ...) to the tests" OFF)
option(VEL_INSTALL "Add the rules that install the library" ${PROJECT_IS_TOP_LEVEL})
option(VEL_EXAMPLES "Build the examples" OFF)
option(VEL_FUZZ "Build the fuzzers; needs Clang" OFF)
option(VEL_BENCHMARKS "Build the benchmarks" OFF)
option(VEL_WARNINGS_AS_ERRORS "Make the compiler's warnings errors" OFF)

set(VEL_X11 "AUTO" CACHE STRING "The X11 back end: ON, OFF, or AUTO for when its libraries are found")
set_property(CACHE VEL_X11 PROPERTY STRINGS AUTO ON OFF)

set(VEL_SANITIZERS "" CACHE STRING "What to instrument the code with, as -fsanitize takes it")
option(VEL_COVERAGE "Instrument the code for coverage" OFF)
