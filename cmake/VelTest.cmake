# vel_add_test(<name> [SOURCES <source>...] [GLOB <pattern>...] [LINK <target>...]
#              [TIMEOUT <seconds>])
#
# Makes the program <name>Tests of the given sources, or else of every source that a pattern
# matches, folders below included; the usual pattern is <name>/*.cpp. Each case in it is a test of
# its own for ctest, with <name> as its label. Without sources there is no program.
function(vel_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT" "SOURCES;GLOB;LINK")
  if(test_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vel_add_test(${name}): what is '${test_UNPARSED_ARGUMENTS}'?")
  endif()
  if(NOT test_SOURCES)
    if(NOT test_GLOB)
      set(test_GLOB "${name}/*.cpp")
    endif()
    file(GLOB_RECURSE test_SOURCES CONFIGURE_DEPENDS ${test_GLOB})
  endif()
  if(NOT test_SOURCES)
    return()
  endif()
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 60)
  endif()

  add_executable(${name}Tests ${test_SOURCES})
  target_link_libraries(${name}Tests
    PRIVATE vel::TestSupport ${test_LINK} GTest::gmock_main vel::CompilerSettings)
  gtest_discover_tests(${name}Tests
    TEST_PREFIX "${name}."
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${test_TIMEOUT} LABELS ${name})
endfunction()
