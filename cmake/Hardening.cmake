# What makes an overlooked fault end the program rather than serve an attacker. tools/check_hardening.sh looks for it in
# finished programs. Builds for debugging do without most of it: there, the sanitizers find more.
target_compile_options(permora_settings INTERFACE -fstack-protector-strong)

# Indices beyond the end of a container end the program.
set(permora_optimises $<NOT:$<CONFIG:Debug>>)
if(PERMORA_SANITIZE)
    target_compile_definitions(permora_settings INTERFACE _GLIBCXX_ASSERTIONS)
else()
    target_compile_definitions(permora_settings INTERFACE $<${permora_optimises}:_GLIBCXX_ASSERTIONS>)
endif()

if(WIN32)
    # One file with no library beside it, the same bytes from each build. The linker makes it movable, its data not executable.
    target_link_options(permora_settings INTERFACE -static -fstack-protector-strong -Wl,--no-insert-timestamp $<$<CONFIG:Release>:-s>)
    return()
endif()

target_link_options(permora_settings INTERFACE -Wl,-z,relro,-z,now)
if(PERMORA_SANITIZE)
    return()
endif()

# Checked calls of the C library. A packager's flags may define the level too. GCC before 12 knows no third one.
set(permora_fortify 3)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
    set(permora_fortify 2)
endif()
target_compile_options(permora_settings INTERFACE
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${permora_fortify}>"
    $<${permora_optimises}:-fPIE>)
target_link_options(permora_settings INTERFACE $<${permora_optimises}:-pie>)

# Not every processor has these.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fstack-clash-protection PERMORA_HAS_STACK_CLASH_PROTECTION)
if(PERMORA_HAS_STACK_CLASH_PROTECTION)
    target_compile_options(permora_settings INTERFACE $<${permora_optimises}:-fstack-clash-protection>)
endif()
check_cxx_compiler_flag(-fcf-protection PERMORA_HAS_CF_PROTECTION)
if(PERMORA_HAS_CF_PROTECTION)
    # The linker marks a program for shadow stacks only if all of its parts are, and Debian's start of a program is not,
    # although it does nothing unusual with return addresses.
    target_compile_options(permora_settings INTERFACE $<${permora_optimises}:-fcf-protection>)
    target_link_options(permora_settings INTERFACE $<${permora_optimises}:LINKER:-z,shstk>)
endif()
