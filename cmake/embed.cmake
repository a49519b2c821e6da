# embed_file(TARGET FILE HEADER NAME): generates HEADER, which TARGET can include. It defines the array NAME with the
# bytes of FILE.
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
