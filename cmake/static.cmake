# add_static_program(TARGET SOURCE LIBRARY...): adds a program that needs no library at run time, so that it runs on any
# Linux. It is linked in two steps. The first makes TARGET.o, one object with all of our code, which is part of what users
# get: the licence of the C library asks that they can link the program with a changed C library.
function(add_static_program target source)
    set(object ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.o)
    add_executable(${target}-object ${source})
    set_target_properties(${target}-object PROPERTIES OUTPUT_NAME ${target}.o)
    target_link_libraries(${target}-object PRIVATE ${ARGN})
    # With more than one partition g++ 12 crashes in this step.
    target_link_options(${target}-object PRIVATE -r -nostdlib -flto-partition=one -flinker-output=nolto-rel)

    add_executable(${target} ${object})
    add_dependencies(${target} ${target}-object)
    set_source_files_properties(${object} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
    target_link_options(${target} PRIVATE -static-pie)
    target_link_libraries(${target} PRIVATE quillmere_flags)
endfunction()
