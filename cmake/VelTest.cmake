# vel_add_test(<name> [SOURCES <source>...] [LINK <target>...] [TIMEOUT <seconds>])
#
# Builds the program <name>Tests from the given sources, or from all sources in the folder <name>
# and its subfolders. Each test case becomes a test of ctest with the label <name>.
function(vel_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT" "SOURCES;LINK")
  if(test_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vel_add_test(${name}): unknown argument '${test_UNPARSED_ARGUMENTS}'")
  endif()
  if(NOT test_SOURCES)
    file(GLOB_RECURSE test_SOURCES CONFIGURE_DEPENDS "${name}/*.cpp")
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
