# make_licences(PRODUCT NEWLINES): puts our terms, and those of each library that packaging/libraries.json names for
# PRODUCT, into the folder licences of the build folder; the install() call is the caller's. The lines of the texts end
# as NEWLINES says: LF or CRLF. The libraries' terms are those that Debian's packages come with, so they are made on
# Debian only.
function(make_licences product newlines)
    set(table ${PROJECT_SOURCE_DIR}/packaging/libraries.json)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${table})
    file(READ ${table} libraries)
    string(JSON count LENGTH "${libraries}")
    math(EXPR last "${count} - 1")
    set(list "")
    foreach(row RANGE ${last})
        string(JSON package ERROR_VARIABLE missing GET "${libraries}" ${row} packages ${product})
        string(JSON for_any ERROR_VARIABLE missing_for_any GET "${libraries}" ${row} packages any)
        if(missing AND missing_for_any)
            continue()
        elseif(missing)
            set(package ${for_any})
        endif()
        string(JSON name GET "${libraries}" ${row} name)
        string(JSON licence GET "${libraries}" ${row} licence)
        string(JSON file GET "${libraries}" ${row} file)
        configure_file(/usr/share/doc/${package}/copyright licences/${file} @ONLY NEWLINE_STYLE ${newlines})
        execute_process(
            COMMAND dpkg-query --show --showformat "\${Package} \${Version}" ${package}
            OUTPUT_VARIABLE package COMMAND_ERROR_IS_FATAL ANY
        )
        string(APPEND list "\n${file}: ${name}, from Debian's ${package}\n    ${licence}\n")
        string(JSON terms ERROR_VARIABLE no_terms GET "${libraries}" ${row} terms)
        if(NOT no_terms)
            string(TOLOWER ${terms} file)
            configure_file(/usr/share/common-licenses/${terms} licences/${file}.txt @ONLY NEWLINE_STYLE ${newlines})
            string(APPEND list "    The text of the licence is in ${file}.txt.\n")
        endif()
    endforeach()
    configure_file(${PROJECT_SOURCE_DIR}/packaging/licences.txt.in licences/quillmere.txt @ONLY NEWLINE_STYLE ${newlines})
endfunction()
