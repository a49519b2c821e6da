# Provides CLI11::CLI11, the header-only command-line parser.
if(CMAKE_CROSSCOMPILING)
    # The build machine's copy will do. Its folder also holds that machine's C library, so take the headers out of it.
    set(cli11_headers ${CMAKE_BINARY_DIR}/cli11)
    file(COPY /usr/include/CLI DESTINATION ${cli11_headers})
    add_library(CLI11::CLI11 INTERFACE IMPORTED)
    target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${cli11_headers})
else()
    find_package(CLI11 REQUIRED)
endif()
