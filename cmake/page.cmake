# Puts the page that shows a report together, from its sources and those of the map library.
set(QUILLMERE_LEAFLET /usr/share/javascript/leaflet CACHE PATH "Folder with leaflet.css and leaflet.min.js or leaflet.js")

# embed_page(TARGET FOLDER HEADER NAME): as embed_file, with the page made from page.html, page.css and page.js in
# FOLDER. The page allows these styles and scripts and no others.
function(embed_page target folder header name)
    set(library ${QUILLMERE_LEAFLET}/leaflet.min.js)
    if(NOT EXISTS ${library})
        set(library ${QUILLMERE_LEAFLET}/leaflet.js)
    endif()
    if(NOT EXISTS ${library} OR NOT EXISTS ${QUILLMERE_LEAFLET}/leaflet.css)
        message(FATAL_ERROR "Leaflet is not in ${QUILLMERE_LEAFLET}. Set QUILLMERE_LEAFLET to the folder that holds "
                            "leaflet.css and leaflet.min.js or leaflet.js."
        )
    endif()
    read_text(${library} library_script)
    read_text(${QUILLMERE_LEAFLET}/leaflet.css library_style)
    read_text(${folder}/page.js page_script)
    read_text(${folder}/page.css page_style)
    # The page stands alone: no source map, and no pictures, which only controls that it does not have would show.
    string(REGEX REPLACE "//# sourceMappingURL=[^\n]*" "" library_script "${library_script}")
    string(REGEX REPLACE "url\\([^)]*\\)" "none" library_style "${library_style}")
    foreach(part library_script library_style page_script page_style)
        content_hash("${${part}}" ${part}_hash)
    endforeach()
    configure_file(${folder}/page.html ${CMAKE_CURRENT_BINARY_DIR}/page.html @ONLY NEWLINE_STYLE LF)
    embed_file(${target} ${CMAKE_CURRENT_BINARY_DIR}/page.html ${header} ${name})
endfunction()
