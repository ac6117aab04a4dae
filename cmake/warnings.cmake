# The warnings that every target of the project is built with.
option(VANTLO_WARNINGS_AS_ERRORS "Make errors of the compiler's warnings, as the presets do" OFF)
set(warnings -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
             -Woverloaded-virtual)
if(VANTLO_WARNINGS_AS_ERRORS)
    list(APPEND warnings -Werror)
endif()
# GCC 12 takes a character put before a text for a copy onto itself.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    list(APPEND warnings -Wno-restrict)
endif()
add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:${warnings}>")

# 32-bit x86 would otherwise compute in 80-bit registers and round twice.
if(CMAKE_CXX_COMPILER_TARGET MATCHES "i686" OR CMAKE_SYSTEM_PROCESSOR MATCHES "i686|x86$")
    add_compile_options(-msse2 -mfpmath=sse)
endif()
