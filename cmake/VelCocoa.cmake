# Finds AppKit: the framework on macOS, the free AppKit of GNUstep elsewhere. Adds the option VEL_COCOA,
# which decides whether the AppKit back end is built: ON, OFF, or AUTO (if AppKit and an Objective-C++
# compiler are found). If it is built, sets VEL_COCOA_ENABLED and creates vel::AppKitFramework, which
# targets with Objective-C++ sources link. With AUTO, prints what is missing.

set(VEL_COCOA "AUTO" CACHE STRING "Build the AppKit back end: ON, OFF or AUTO")
set_property(CACHE VEL_COCOA PROPERTY STRINGS AUTO ON OFF)
set(VEL_COCOA_ENABLED FALSE)
list(APPEND VEL_OPTIONAL_BACKENDS Cocoa)

# Sets `missing` in the scope of the caller to what is missing, or to an empty text.
function(vel_find_cocoa)
  set(missing "" PARENT_SCOPE)
  if(NOT APPLE)
    find_program(VEL_GNUSTEP_CONFIG gnustep-config)
    if(NOT VEL_GNUSTEP_CONFIG)
      set(missing "gnustep-config, of the package libgnustep-gui-dev" PARENT_SCOPE)
      return()
    endif()
  endif()
  if(NOT CMAKE_OBJCXX_COMPILER)
    set(CMAKE_OBJCXX_COMPILER "${CMAKE_CXX_COMPILER}" CACHE FILEPATH "The Objective-C++ compiler")
  endif()
  if(NOT CMAKE_OBJC_COMPILER)
    set(CMAKE_OBJC_COMPILER "${CMAKE_C_COMPILER}" CACHE FILEPATH "The Objective-C compiler")
  endif()
  set(runtime_flags "")
  if(NOT APPLE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # Clang does not search the folder with GCC's Objective-C headers.
    execute_process(
      COMMAND gcc -print-file-name=include
      OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    set(runtime_flags -idirafter "${folder}")
  endif()
  set(VEL_OBJC_RUNTIME_FLAGS "${runtime_flags}" PARENT_SCOPE)
  file(WRITE "${CMAKE_BINARY_DIR}/objcxx/try.mm" "#include <objc/objc.h>\n@interface Try\n@end\n")
  execute_process(
    COMMAND "${CMAKE_OBJCXX_COMPILER}" ${runtime_flags} -fsyntax-only -x objective-c++
      "${CMAKE_BINARY_DIR}/objcxx/try.mm"
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
  if(NOT result EQUAL 0)
    set(missing "an Objective-C++ compiler, such as that of the package gobjc++" PARENT_SCOPE)
    return()
  endif()
  if(NOT APPLE)
    find_path(VEL_GNUSTEP_HEADERS AppKit/AppKit.h PATH_SUFFIXES GNUstep)
    if(NOT VEL_GNUSTEP_HEADERS)
      set(missing "AppKit/AppKit.h, of the package libgnustep-gui-dev" PARENT_SCOPE)
    endif()
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
  enable_language(OBJC OBJCXX)
  # The user's C++ flags can choose a standard library or a sanitizer, so Objective-C++ needs them too.
  string(APPEND CMAKE_OBJCXX_FLAGS " ${CMAKE_CXX_FLAGS}")
  set(CMAKE_OBJCXX_VISIBILITY_PRESET hidden)

  add_library(VelAppKitFramework INTERFACE)
  add_library(vel::AppKitFramework ALIAS VelAppKitFramework)
  # No warnings where Objective-C leaves no choice: a method must also name the parameters that it does
  # not use, and a class without members is an empty structure.
  target_compile_options(VelAppKitFramework
    INTERFACE
      $<$<COMPILE_LANGUAGE:OBJC>:-Wno-pedantic>
      $<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20>
      $<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:-Wno-unused-parameter>)
  if(APPLE)
    target_link_libraries(VelAppKitFramework INTERFACE "-framework AppKit" "-framework Foundation")
  else()
    execute_process(
      COMMAND "${VEL_GNUSTEP_CONFIG}" --objc-flags
      OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    # The flags that are left out choose warnings, an optimisation level and folders in the user's home.
    list(FILTER flags INCLUDE REGEX "^(-D.*|-fexceptions|-fobjc-.*|-fconstant-string-class=.*|-pthread)$")
    target_compile_options(VelAppKitFramework
      INTERFACE "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${flags};${VEL_OBJC_RUNTIME_FLAGS}>")
    # SYSTEM: the compiler does not warn about these headers.
    target_include_directories(VelAppKitFramework SYSTEM INTERFACE "${VEL_GNUSTEP_HEADERS}")
    target_link_libraries(VelAppKitFramework INTERFACE gnustep-gui gnustep-base objc)
  endif()
endif()
