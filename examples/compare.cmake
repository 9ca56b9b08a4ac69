# Runs PROGRAM, which must succeed and print the text of the file EXPECTED, or a text that starts so.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE text RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
string(FIND "${text}" "${expected}" start)
if(NOT result EQUAL 0 OR NOT start EQUAL 0)
    message(FATAL_ERROR "${result}\n${text}")
endif()
