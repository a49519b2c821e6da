# embed_file(TARGET FILE HEADER NAME): HEADER, which TARGET can include, holds the bytes of FILE as the array NAME.
function(embed_file target file header name)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/embedded)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(READ ${file} bytes HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
    file(
        CONFIGURE
        OUTPUT ${folder}/${header}
        CONTENT "#pragma once\n\ninline constexpr unsigned char @name@[] = {@bytes@};\n"
        @ONLY
    )
    target_include_directories(${target} PRIVATE ${folder})
endfunction()
