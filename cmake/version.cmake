# The version of the programs. Everything that shows it is made from these four values.
set(QUILLMERE_VERSION 0.99b)
set(QUILLMERE_BUILD 3)
set(QUILLMERE_BUILD_DATE 01/11/03)  # as the about box and --version show it
set(QUILLMERE_RELEASE_DATE 2026-11-22)  # year-month-day, for software catalogues

# CMake and Windows know versions as numbers only: 0.99b, build 3, is 0.99 to CMake and 0.99.0.3 to Windows.
if(NOT QUILLMERE_VERSION MATCHES "^([0-9]+\\.[0-9]+)[a-z]?$")
    message(FATAL_ERROR "The version ${QUILLMERE_VERSION} is not of the form 1.2 or 1.2b")
endif()
set(QUILLMERE_VERSION_NUMBERS ${CMAKE_MATCH_1})
set(QUILLMERE_WINDOWS_VERSION ${CMAKE_MATCH_1}.0.${QUILLMERE_BUILD})
