# vel_add_test(<name> [LINK <target>...])
#
# Builds the program <name>Tests from the sources in the folder <name> and its subfolders. Excludes
# subfolders that are named after an optional back end. Each test case becomes a test of ctest with the
# label <name>.
function(vel_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "" "LINK")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${name}/*.cpp")
  list(JOIN VEL_OPTIONAL_BACKENDS "|" backends)
  list(FILTER sources EXCLUDE REGEX "/(${backends})/")
  vel_add_test_program(${name} SOURCES ${sources} LINK ${test_LINK} TIMEOUT 60)
endfunction()

# vel_add_backend_test(<backend> <folder> [ONE_TEST] [SOURCES <source>...] [LINK <target>...]
#                      [TIMEOUT <seconds>])
#
# Builds the program <backend><folder>Tests from the sources in <folder>/<backend> and the given
# sources. It links the target Vel<backend>TestSupport. Each test case becomes a test of ctest with the
# label <backend><folder>. With ONE_TEST, the whole program becomes one test: use this if the display
# starts slowly, and test cases can share the display.
function(vel_add_backend_test backend folder)
  cmake_parse_arguments(PARSE_ARGV 2 test "ONE_TEST" "TIMEOUT" "SOURCES;LINK")
  if(test_ONE_TEST)
    set(one_test ONE_TEST)
  else()
    set(one_test "")
  endif()
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 60)
  endif()
  file(GLOB sources CONFIGURE_DEPENDS "${folder}/${backend}/*.cpp" "${folder}/${backend}/*.mm")
  vel_add_test_program(${backend}${folder}
    SOURCES ${sources} ${test_SOURCES} LINK Vel${backend}TestSupport ${test_LINK}
    TIMEOUT ${test_TIMEOUT} ${one_test})
endfunction()

# vel_add_test_program(<name> [ONE_TEST] SOURCES <source>... [LINK <target>...] TIMEOUT <seconds>)
#
# Builds the program <name>Tests and adds its test cases to ctest, with the label <name>. With ONE_TEST,
# adds the whole program as one test.
function(vel_add_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 test "ONE_TEST" "TIMEOUT" "SOURCES;LINK")
  add_executable(${name}Tests ${test_SOURCES})
  target_link_libraries(${name}Tests
    PRIVATE vel::TestSupport ${test_LINK} GTest::gmock_main vel::CompilerSettings)
  if(test_ONE_TEST)
    add_test(NAME ${name}.all COMMAND ${name}Tests WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}")
    set_tests_properties(${name}.all PROPERTIES TIMEOUT ${test_TIMEOUT} LABELS ${name})
    return()
  endif()
  gtest_discover_tests(${name}Tests
    TEST_PREFIX "${name}."
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${test_TIMEOUT} LABELS ${name})
endfunction()
