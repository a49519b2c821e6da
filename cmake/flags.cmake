# The programs run from any folder, so they bring the compiler's run-time libraries along; with Qt that is Qt's affair.
if(MSVC AND NOT QUILLMERE_QT)
    set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
endif()

# The flags that every target of the project is built with: link quillmere_flags.
add_library(quillmere_flags INTERFACE)
target_include_directories(quillmere_flags INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/src)
if(WIN32)
    target_compile_definitions(
        quillmere_flags INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00
    )
endif()
if(MINGW)
    target_link_options(quillmere_flags INTERFACE -static)
endif()
if(MSVC)
    target_compile_options(quillmere_flags INTERFACE /W4 /WX /utf-8)
    target_compile_definitions(quillmere_flags INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(
        quillmere_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    )
    if(MINGW AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # Fully optimised, the library's own strings seem to overlap.
        target_compile_options(quillmere_flags INTERFACE -Wno-restrict)
    endif()
endif()

if(QUILLMERE_FUZZ)
    target_compile_options(quillmere_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(QUILLMERE_SANITIZE)
    # Ends the program at the first finding, so that a test with one fails.
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(quillmere_flags INTERFACE ${sanitizers})
    target_link_options(quillmere_flags INTERFACE ${sanitizers})
endif()

# What users run is hardened: position-independent, stack and library calls guarded, relocations read-only.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND UNIX)
    include(CheckPIESupported)
    check_pie_supported()
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    target_compile_definitions(quillmere_flags INTERFACE _FORTIFY_SOURCE=2)
    target_compile_options(quillmere_flags INTERFACE -fstack-protector-strong)
    target_link_options(quillmere_flags INTERFACE LINKER:-z,relro,-z,now)
endif()
