# make_licences(PRODUCT NEWLINES): puts our terms, and those of each library that packaging/libraries.json names for
# PRODUCT, into the folder licences of the build folder; the install() call is the caller's. The lines of the texts end
# as NEWLINES says: LF or CRLF. The libraries' terms are those that Debian's packages come with; on other systems they are
# left out, so packages for users are made on Debian.
function(make_licences product newlines)
    set(table ${PROJECT_SOURCE_DIR}/packaging/libraries.json)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${table})
    file(READ ${table} libraries)
    find_program(dpkg_query dpkg-query NO_CACHE)
    set(list "")
    file(REMOVE_RECURSE ${CMAKE_CURRENT_BINARY_DIR}/licences)  # of libraries that are no longer named
    if(dpkg_query)
        string(JSON count LENGTH "${libraries}")
        math(EXPR last "${count} - 1")
        foreach(row RANGE ${last})
            string(JSON library GET "${libraries}" ${row})
            add_licence("${library}")
        endforeach()
    endif()
    if(newlines STREQUAL "CRLF")
        string(REPLACE "\n" "\r\n" list "${list}")  # configure_file changes the ends of its own lines only
    endif()
    configure_file(${PROJECT_SOURCE_DIR}/packaging/licences.txt.in licences/quillmere.txt @ONLY NEWLINE_STYLE ${newlines})
endfunction()

# library_field(LIBRARY NAME...): sets NAME to that member of the object LIBRARY, or to nothing.
macro(library_field library name)
    string(JSON ${name} ERROR_VARIABLE error GET "${library}" ${name} ${ARGN})
    if(error)
        set(${name} "")
    endif()
endmacro()

# For make_licences: adds the terms of one library, if the product has it, and tells of it in list.
function(add_licence library)
    library_field("${library}" packages ${product})
    set(package "${packages}")
    if(NOT package)
        library_field("${library}" packages any)
        set(package "${packages}")
    endif()
    if(NOT package)
        return()
    endif()
    foreach(member name licence file terms note)
        library_field("${library}" ${member})
    endforeach()
    execute_process(
        COMMAND ${dpkg_query} --show --showformat "\${Package} \${Version}" ${package}
        OUTPUT_VARIABLE origin RESULT_VARIABLE unknown ERROR_QUIET
    )
    if(unknown OR NOT EXISTS /usr/share/doc/${package}/copyright)
        message(WARNING "The terms of ${name} are left out, since Debian's package ${package} is not installed")
        return()
    endif()
    configure_file(/usr/share/doc/${package}/copyright licences/${file} @ONLY NEWLINE_STYLE ${newlines})
    string(APPEND list "\n${file}: ${name}, from Debian's ${origin}\n    ${licence}\n")
    if(note)
        string(APPEND list "    ${note}\n")
    endif()
    if(terms)
        string(TOLOWER ${terms}.txt file)
        configure_file(/usr/share/common-licenses/${terms} licences/${file} @ONLY NEWLINE_STYLE ${newlines})
        string(APPEND list "    The text of the licence is in ${file}.\n")
    endif()
    set(list "${list}" PARENT_SCOPE)
endfunction()
