# SQLite::SQLite3, which keeps the history.
if(NOT WIN32)
    find_package(SQLite3 REQUIRED)
    return()
endif()

# Not every Windows has a library of it, so it becomes part of the program.
foreach(tool IN ITEMS dpkg-source make tclsh)
    find_program(permora_${tool} ${tool} NO_CACHE)
    if(NOT permora_${tool})
        message(FATAL_ERROR "${tool} is missing, which makes SQLite from its source: install dpkg-dev and tcl")
    endif()
endforeach()

enable_language(C)
set(permora_sqlite ${CMAKE_BINARY_DIR}/sqlite)
file(MAKE_DIRECTORY ${permora_sqlite})
add_custom_command(
    OUTPUT ${permora_sqlite}/sqlite3.c ${permora_sqlite}/sqlite3.h
    COMMAND ${PROJECT_SOURCE_DIR}/tools/sqlite_source.sh ${permora_sqlite}
    DEPENDS ${PROJECT_SOURCE_DIR}/tools/sqlite_source.sh
    COMMENT "Fetching the source of SQLite"
    VERBATIM)
add_library(permora_sqlite STATIC ${permora_sqlite}/sqlite3.c ${permora_sqlite}/sqlite3.h)
set_target_properties(permora_sqlite PROPERTIES UNITY_BUILD OFF)
target_include_directories(permora_sqlite SYSTEM INTERFACE ${permora_sqlite})
# Texts in double quotes are no texts, no library is loaded at run time, and connections share nothing.
target_compile_definitions(permora_sqlite PRIVATE
    SQLITE_THREADSAFE=2 SQLITE_DQS=0 SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_SHARED_CACHE)
target_compile_options(permora_sqlite PRIVATE -fstack-protector-strong)
add_library(SQLite::SQLite3 ALIAS permora_sqlite)
