# CLI11::CLI11 and nlohmann_json::nlohmann_json, libraries that are nothing but headers.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(CLI11 REQUIRED)
    find_package(nlohmann_json REQUIRED)
    return()
endif()

# They stand among the headers of this machine's C library, which a cross compiler must not see: it gets a folder
# that leads to these two alone.
set(permora_headers ${CMAKE_BINARY_DIR}/header_libraries)
file(MAKE_DIRECTORY ${permora_headers})
foreach(library IN ITEMS CLI nlohmann)
    if(NOT IS_DIRECTORY /usr/include/${library})
        message(FATAL_ERROR "/usr/include/${library} is missing: install libcli11-dev and nlohmann-json3-dev")
    endif()
    file(CREATE_LINK /usr/include/${library} ${permora_headers}/${library} SYMBOLIC)
endforeach()
foreach(library IN ITEMS CLI11::CLI11 nlohmann_json::nlohmann_json)
    add_library(${library} INTERFACE IMPORTED)
    target_include_directories(${library} SYSTEM INTERFACE ${permora_headers})
endforeach()
