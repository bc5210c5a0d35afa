# Warnings for every target of the project.
option(PERMORA_WERROR "Treat warnings as errors; the presets do" OFF)

add_library(permora_settings INTERFACE)
target_include_directories(permora_settings INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(permora_settings INTERFACE
    -Wall -Wextra -Wpedantic $<$<BOOL:${PERMORA_WERROR}>:-Werror>
    -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wformat=2)

# What names a source names it from the project's folder, wherever that is.
target_compile_options(permora_settings INTERFACE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

# When it optimises, GCC 12 mistakes joining a text and a string for an overlapping copy: GCC bug 105651.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(permora_settings INTERFACE -Wno-restrict)
endif()

# Where sources are joined, clang warns of a name that is local to a neighbour. GCC warns of what stands in one source.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(permora_settings INTERFACE -Wno-shadow)
endif()

include(Hardening)
if(NOT WIN32)
    # It links each of the hundred programs in a fifth of the usual linker's time or less.
    add_link_options(-fuse-ld=mold)
endif()

if(PERMORA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
    # The types of a library that is loaded while the program runs have other names there than here.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        add_compile_options(-fno-sanitize=function)
    endif()
endif()

if(PERMORA_FUZZ)
    # The libraries need the coverage instrumentation; each fuzz target links the driver itself.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
