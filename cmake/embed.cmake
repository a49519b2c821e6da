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

# read_text(FILE NAME): sets NAME to the text of FILE, with lines that end with LF on every system.
function(read_text file name)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(READ ${file} text)
    string(REPLACE "\r\n" "\n" text "${text}")
    set(${name} "${text}" PARENT_SCOPE)
endfunction()

# content_hash(TEXT NAME): sets NAME to what allows the style or script TEXT in a Content-Security-Policy.
function(content_hash text name)
    set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
    string(SHA256 hex "${text}")
    set(base64 "")
    # Three digits of base 16 are two of base 64.
    foreach(start RANGE 0 63 3)
        string(SUBSTRING ${hex}00 ${start} 3 bits)
        math(EXPR high "0x${bits} >> 6")
        math(EXPR low "0x${bits} & 63")
        string(SUBSTRING ${digits} ${high} 1 high)
        string(SUBSTRING ${digits} ${low} 1 low)
        string(APPEND base64 ${high}${low})
    endforeach()
    string(REGEX REPLACE "A$" "=" base64 ${base64})
    set(${name} "'sha256-${base64}'" PARENT_SCOPE)
endfunction()
