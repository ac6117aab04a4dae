# Cross-compiling for Windows with mingw-w64, for the processor that VANTLO_WINDOWS_PROCESSOR names: x86_64 or i686.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTLO_WINDOWS_PROCESSOR)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${VANTLO_WINDOWS_PROCESSOR})

set(prefix ${VANTLO_WINDOWS_PROCESSOR}-w64-mingw32)
set(CMAKE_C_COMPILER ${prefix}-gcc-posix)
set(CMAKE_CXX_COMPILER ${prefix}-g++-posix)
set(CMAKE_RC_COMPILER ${prefix}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs and libraries depend on system DLLs alone, so that one file is all there is to copy.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

# The wide API, without the old macros' names.
add_compile_definitions(UNICODE _UNICODE NOMINMAX)
