# Compiler settings of the whole project.

set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
  endif()
endif()

find_package(Threads REQUIRED)

# Flags of the project's own targets. Programs that link the library do not inherit them.
add_library(VelCompilerSettings INTERFACE)
add_library(vel::CompilerSettings ALIAS VelCompilerSettings)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(VelCompilerSettings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion)
  # Let the linker remove unused functions and data.
  target_compile_options(VelCompilerSettings INTERFACE -ffunction-sections -fdata-sections)
endif()
if(VEL_WARNINGS_AS_ERRORS)
  target_compile_options(VelCompilerSettings INTERFACE -Werror)
endif()
if(VEL_SANITIZERS)
  set(sanitizer_flags -fsanitize=${VEL_SANITIZERS} -fno-sanitize-recover=all)
  target_compile_options(VelCompilerSettings INTERFACE ${sanitizer_flags} -fno-omit-frame-pointer)
  target_link_options(VelCompilerSettings INTERFACE ${sanitizer_flags})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC reports false positives in instrumented code.
    target_compile_options(VelCompilerSettings INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(VEL_COVERAGE)
  target_compile_options(VelCompilerSettings INTERFACE --coverage)
  target_link_options(VelCompilerSettings INTERFACE --coverage)
endif()
