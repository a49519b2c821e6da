# CLI11::CLI11, the library of the command line: headers only.
if(CMAKE_CROSSCOMPILING)
    # The build machine's package serves, but its folder of headers holds that machine's C library, too.
    set(cli11_headers ${CMAKE_BINARY_DIR}/cli11)
    file(COPY /usr/include/CLI DESTINATION ${cli11_headers})
    add_library(CLI11::CLI11 INTERFACE IMPORTED)
    target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${cli11_headers})
else()
    find_package(CLI11 REQUIRED)
endif()
