# Finds AppKit: the framework on macOS, the free AppKit of GNUstep elsewhere. The build of the library uses
# this file, and so does the installed CMake package.

# vel_find_appkit(<missing>)
#
# Sets the variable <missing> to what is missing, or to an empty text.
function(vel_find_appkit missing)
  set(${missing} "" PARENT_SCOPE)
  if(APPLE)
    return()
  endif()
  find_program(VEL_GNUSTEP_CONFIG gnustep-config)
  if(NOT VEL_GNUSTEP_CONFIG)
    set(${missing} "gnustep-config, of the package libgnustep-gui-dev" PARENT_SCOPE)
    return()
  endif()
  find_path(VEL_GNUSTEP_HEADERS AppKit/AppKit.h PATH_SUFFIXES GNUstep)
  if(NOT VEL_GNUSTEP_HEADERS)
    set(${missing} "AppKit/AppKit.h, of the package libgnustep-gui-dev" PARENT_SCOPE)
  endif()
endfunction()

# vel_objc_runtime_flags(<flags>)
#
# Sets the variable <flags> to the flags with which Clang finds the headers of GCC's Objective-C runtime,
# which the free AppKit uses. Clang does not search the folder with these headers itself.
function(vel_objc_runtime_flags flags)
  set(${flags} "" PARENT_SCOPE)
  if(NOT APPLE)
    execute_process(
      COMMAND gcc -print-file-name=include
      OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    set(${flags} "-idirafter ${folder}" PARENT_SCOPE)
  endif()
endfunction()

# vel_add_appkit()
#
# Creates the interface target VelLaunchScreen::AppKitFramework: the flags, headers and libraries of AppKit.
# Call this function after vel_find_appkit.
function(vel_add_appkit)
  set(target VelLaunchScreen::AppKitFramework)
  if(TARGET ${target})
    return()
  endif()
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  if(APPLE)
    target_link_libraries(${target} INTERFACE "-framework AppKit" "-framework Foundation")
    return()
  endif()
  execute_process(
    COMMAND "${VEL_GNUSTEP_CONFIG}" --objc-flags
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  # The flags that are left out choose warnings, an optimisation level and folders in the user's home.
  list(FILTER flags INCLUDE REGEX "^(-D.*|-fexceptions|-fobjc-.*|-fconstant-string-class=.*|-pthread)$")
  vel_objc_runtime_flags(runtime_flags)
  target_compile_options(${target}
    INTERFACE
      "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${flags}>"
      "$<$<COMPILE_LANG_AND_ID:OBJC,Clang>:SHELL:${runtime_flags}>"
      "$<$<COMPILE_LANG_AND_ID:OBJCXX,Clang>:SHELL:${runtime_flags}>")
  # SYSTEM: the compiler does not warn about these headers.
  target_include_directories(${target} SYSTEM INTERFACE "${VEL_GNUSTEP_HEADERS}")
  target_link_libraries(${target} INTERFACE gnustep-gui gnustep-base objc)
endfunction()
