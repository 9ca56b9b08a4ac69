# cmake -DSCHEMA=.. -DWORK=.. -DTRANG=.. -P schema_forms.cmake
# Both forms of the schema say the same: the XML form is what the compact one translates to.
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${TRANG} ${SCHEMA}/tqxml.rnc ${WORK}/tqxml.rng COMMAND_ERROR_IS_FATAL ANY)
foreach(name IN ITEMS tqxml.rng tqxml-items.rng)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${SCHEMA}/${name} ${WORK}/${name}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
