# What every target of the project is compiled with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(vorlent_options INTERFACE)
target_compile_options(vorlent_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Werror
  # GCC 12 takes optimised string code for overlapping copies (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_include_directories(vorlent_options INTERFACE "${PROJECT_SOURCE_DIR}/src")
if(WIN32)
  target_compile_definitions(vorlent_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

if(VORLENT_SANITIZE)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(vorlent_options INTERFACE ${sanitizers})
  target_link_options(vorlent_options INTERFACE ${sanitizers})
endif()
