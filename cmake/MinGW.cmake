# Toolchain: builds for Windows with mingw-w64. VORLENT_PROCESSOR is x86_64 or i686.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VORLENT_PROCESSOR)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR "${VORLENT_PROCESSOR}")

# Of the two models of threads that of POSIX has what the standard library needs.
set(prefix "${VORLENT_PROCESSOR}-w64-mingw32")
set(CMAKE_C_COMPILER "${prefix}-gcc-posix")
set(CMAKE_CXX_COMPILER "${prefix}-g++-posix")
set(CMAKE_RC_COMPILER "${prefix}-windres")

set(CMAKE_FIND_ROOT_PATH "/usr/${prefix}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# What is built needs the system's own libraries only.
# A program's stack is as large as on other systems: what is nested deep is read step within step.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--stack,8388608")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
