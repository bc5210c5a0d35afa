# CLI11::CLI11, nlohmann_json::nlohmann_json and permora_toml (toml++), libraries that are nothing but headers.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(CLI11 REQUIRED)
    find_package(nlohmann_json REQUIRED)
    find_path(PERMORA_TOML_HEADERS toml++/toml.h REQUIRED)
    # Its own package would link the library's compiled form, which is not needed.
    add_library(permora_toml INTERFACE IMPORTED)
    target_include_directories(permora_toml SYSTEM INTERFACE ${PERMORA_TOML_HEADERS})
    return()
endif()

# They stand among the headers of this machine's C library, which a cross compiler must not see: it gets a folder
# that leads to these alone.
set(permora_headers ${CMAKE_BINARY_DIR}/header_libraries)
file(MAKE_DIRECTORY ${permora_headers})
foreach(library IN ITEMS CLI nlohmann toml++)
    if(NOT IS_DIRECTORY /usr/include/${library})
        message(FATAL_ERROR "/usr/include/${library} is missing: install libcli11-dev, nlohmann-json3-dev and libtomlplusplus-dev")
    endif()
    file(CREATE_LINK /usr/include/${library} ${permora_headers}/${library} SYMBOLIC)
endforeach()
foreach(library IN ITEMS CLI11::CLI11 nlohmann_json::nlohmann_json permora_toml)
    add_library(${library} INTERFACE IMPORTED)
    target_include_directories(${library} SYSTEM INTERFACE ${permora_headers})
endforeach()
