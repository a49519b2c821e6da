# add_resources(TARGET DESCRIPTION): adds the icon, the manifest and a version record with DESCRIPTION to the Windows
# program TARGET.
function(add_resources target description)
    set(file_name ${target}.exe)
    set(icon ${PROJECT_SOURCE_DIR}/packaging/windows/quillmere.ico)
    set(manifest ${CMAKE_CURRENT_BINARY_DIR}/quillmere.manifest)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/quillmere.manifest.in ${manifest} @ONLY)
    string(REPLACE "." ", " version_numbers ${QUILLMERE_WINDOWS_VERSION})
    set(resources ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/resources.rc.in ${resources} @ONLY)
    target_sources(${target} PRIVATE ${resources})
    if(MSVC)
        target_link_options(${target} PRIVATE /MANIFEST:NO)  # the linker would add a second one
    endif()
    set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS "${icon};${manifest}")
endfunction()
