# Runs PROGRAM, which must succeed and print the text of the file EXPECTED, no more and no less.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE text RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT text STREQUAL expected)
    message(FATAL_ERROR "${result}\n${text}")
endif()
