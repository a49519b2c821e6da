# Who makes the programs, and where a user writes to. What is made by configure_file takes it from here; the other files
# that name the maker are checked.
set(QUILLMERE_MAKER "Rowan Thistle")
set(QUILLMERE_CONTACT support@quillmere.example)

foreach(
    file
    packaging/bill_of_materials.py
    packaging/changelog
    packaging/copyright
    packaging/man/quillmere-batch.1
    packaging/man/quillmere-world.5
    packaging/man/quillmere.1
    src/ui/frm_about.h
)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${file})
    file(READ ${PROJECT_SOURCE_DIR}/${file} text)
    if(NOT text MATCHES "${QUILLMERE_MAKER}" OR NOT text MATCHES "${QUILLMERE_CONTACT}")
        message(FATAL_ERROR "${file} does not name ${QUILLMERE_MAKER} and ${QUILLMERE_CONTACT}")
    endif()
endforeach()
