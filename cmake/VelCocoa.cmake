# Adds the option VEL_COCOA, which decides whether the AppKit back end is built: ON, OFF, or AUTO (if AppKit
# and an Objective-C++ compiler are found). If it is built, sets VEL_COCOA_ENABLED and creates
# vel::AppKitFramework, which the project's own targets with Objective-C sources link. With AUTO, prints what
# is missing.

include(VelFindAppKit)

set(VEL_COCOA "AUTO" CACHE STRING "Build the AppKit back end: ON, OFF or AUTO")
set_property(CACHE VEL_COCOA PROPERTY STRINGS AUTO ON OFF)
set(VEL_COCOA_ENABLED FALSE)
list(APPEND VEL_OPTIONAL_BACKENDS Cocoa)

# Sets `missing` in the scope of the caller to what is missing, or to an empty text.
function(vel_find_cocoa)
  vel_find_appkit(missing)
  set(missing "${missing}" PARENT_SCOPE)
  if(missing)
    return()
  endif()
  if(NOT CMAKE_OBJCXX_COMPILER)
    set(CMAKE_OBJCXX_COMPILER "${CMAKE_CXX_COMPILER}" CACHE FILEPATH "The Objective-C++ compiler")
  endif()
  if(NOT CMAKE_OBJC_COMPILER)
    set(CMAKE_OBJC_COMPILER "${CMAKE_C_COMPILER}" CACHE FILEPATH "The Objective-C compiler")
  endif()
  vel_objc_runtime_flags(runtime_flags)
  separate_arguments(runtime_flags UNIX_COMMAND "${runtime_flags}")
  file(WRITE "${CMAKE_BINARY_DIR}/objcxx/try.mm" "#include <objc/objc.h>\n@interface Try\n@end\n")
  execute_process(
    COMMAND "${CMAKE_OBJCXX_COMPILER}" ${runtime_flags} -fsyntax-only -x objective-c++
      "${CMAKE_BINARY_DIR}/objcxx/try.mm"
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
  if(NOT result EQUAL 0)
    set(missing "an Objective-C++ compiler, such as that of the package gobjc++" PARENT_SCOPE)
  endif()
endfunction()

if(VEL_COCOA)
  vel_find_cocoa()
  if(missing STREQUAL "")
    set(VEL_COCOA_ENABLED TRUE)
  elseif(NOT VEL_COCOA STREQUAL "AUTO")
    message(FATAL_ERROR "VEL_COCOA is ON, but this is missing: ${missing}")
  else()
    message(STATUS "The AppKit back end is left out. Missing: ${missing}")
  endif()
endif()

if(VEL_COCOA_ENABLED)
  # The user's C++ flags can choose a standard library or a sanitizer, so Objective-C++ needs them too.
  # enable_language finds out which libraries these flags add.
  string(APPEND CMAKE_OBJCXX_FLAGS " ${CMAKE_CXX_FLAGS}")
  enable_language(OBJC OBJCXX)
  set(CMAKE_OBJCXX_VISIBILITY_PRESET hidden)

  vel_add_appkit()
  add_library(VelAppKitFramework INTERFACE)
  add_library(vel::AppKitFramework ALIAS VelAppKitFramework)
  target_link_libraries(VelAppKitFramework INTERFACE VelLaunchScreen::AppKitFramework)
  # No warnings where Objective-C leaves no choice: a method must also name the parameters that it does
  # not use, and a class without members is an empty structure.
  target_compile_options(VelAppKitFramework
    INTERFACE
      $<$<COMPILE_LANGUAGE:OBJC>:-Wno-pedantic>
      $<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20>
      $<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:-Wno-unused-parameter>)
  if(VEL_SANITIZERS MATCHES "address" AND NOT APPLE)
    # Each program that links AppKit needs the list of AppKit's leaks.
    add_library(VelAppKitLeaks OBJECT "${PROJECT_SOURCE_DIR}/Tests/Support/Cocoa/AppKitLeaks.c")
    target_sources(VelAppKitFramework
      INTERFACE
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:VelAppKitLeaks>>)
  endif()
endif()
