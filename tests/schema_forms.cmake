# cmake -DSCHEMA=.. -DWORK=.. -DTRANG=.. -P schema_forms.cmake
# Both forms of the schema say the same: the XML form is what the compact one translates to.
file(MAKE_DIRECTORY ${WORK})
foreach(name IN ITEMS tqxml tqpackets)
    execute_process(COMMAND ${TRANG} ${SCHEMA}/${name}.rnc ${WORK}/${name}.rng
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
foreach(name IN ITEMS tqxml.rng tqxml-items.rng tqpackets.rng)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${SCHEMA}/${name} ${WORK}/${name}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
