# Links the C++ runtime statically, so that the programs run without an installation. Qt needs the runtime as a DLL.
if(MSVC AND NOT QUILLMERE_QT)
    set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
endif()

# Include folders and compiler flags for every target of the project: each links quillmere_flags.
add_library(quillmere_flags INTERFACE)
target_include_directories(
    quillmere_flags INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/src
)
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
        # With full optimisation older versions of g++ wrongly warn of overlapping copies inside std::string.
        target_compile_options(quillmere_flags INTERFACE -Wno-restrict)
    endif()
endif()

if(QUILLMERE_FUZZ)
    target_compile_options(quillmere_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(QUILLMERE_SANITIZE)
    # The first error that a sanitizer finds ends the program, so that the test fails.
    set(sanitizers -fsanitize=${QUILLMERE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(quillmere_flags INTERFACE ${sanitizers})
    target_link_options(quillmere_flags INTERFACE ${sanitizers})
endif()

if(MINGW)
    target_link_options(quillmere_flags INTERFACE LINKER:--no-insert-timestamp)  # every build makes the same bytes
endif()

# Release builds are hardened: random addresses, stack protector, checked library calls, read-only relocations.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT MSVC)
    target_compile_definitions(quillmere_flags INTERFACE _FORTIFY_SOURCE=2)
    target_compile_options(quillmere_flags INTERFACE -fstack-protector-strong)
    target_link_options(quillmere_flags INTERFACE -fstack-protector-strong)  # mingw-w64 has it in a library
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND UNIX)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    if(NOT QUILLMERE_STATIC)  # static programs have a flag of their own, which the one that this adds would override
        include(CheckPIESupported)
        check_pie_supported()
    endif()
    target_link_options(quillmere_flags INTERFACE LINKER:-z,relro,-z,now)
    # Qt's libraries use their own data directly. A copy of it in the program, which link-time optimisation would make
    # without this flag, is not what they use, and the program crashes.
    include(CheckCXXCompilerFlag)
    check_cxx_compiler_flag(-mno-direct-extern-access HAS_NO_DIRECT_EXTERN_ACCESS)
    if(HAS_NO_DIRECT_EXTERN_ACCESS)
        target_compile_options(quillmere_flags INTERFACE -mno-direct-extern-access)
        target_link_options(quillmere_flags INTERFACE -mno-direct-extern-access)
    endif()
endif()
if(MINGW)
    # Without these the linker of mingw-w64 writes that the programs run on Windows versions that they do not run on.
    target_link_options(
        quillmere_flags INTERFACE
        LINKER:--major-subsystem-version,10,--minor-subsystem-version,0,--major-os-version,10,--minor-os-version,0
    )
endif()
if(MSVC)
    target_compile_options(quillmere_flags INTERFACE /guard:cf)
    target_link_options(quillmere_flags INTERFACE /GUARD:CF)
endif()
