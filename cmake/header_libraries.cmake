# Provides the libraries that are headers only: CLI11::CLI11 parses command lines, nlohmann_json::nlohmann_json writes
# JSON.
function(find_headers package target folder)
    if(CMAKE_CROSSCOMPILING)
        # The build machine's copy will do. Its folder also holds that machine's C library, so take the headers out of it.
        set(headers ${CMAKE_BINARY_DIR}/headers)
        file(COPY /usr/include/${folder} DESTINATION ${headers})
        add_library(${target} INTERFACE IMPORTED GLOBAL)
        target_include_directories(${target} SYSTEM INTERFACE ${headers})
    else()
        find_package(${package} REQUIRED GLOBAL)
    endif()
endfunction()

find_headers(CLI11 CLI11::CLI11 CLI)
find_headers(nlohmann_json nlohmann_json::nlohmann_json nlohmann)
