# Runs PROGRAM with ARGUMENTS. It must succeed and print the text of the file EXPECTED, no more and no
# less. With a COMPLAINT it must end with exit code 1, print nothing and say that on standard error.
execute_process(COMMAND ${PROGRAM} ${ARGUMENTS}
    OUTPUT_VARIABLE text ERROR_VARIABLE error RESULT_VARIABLE result)
if(COMPLAINT)
    if(NOT result EQUAL 1 OR NOT text STREQUAL "" OR NOT error MATCHES "${COMPLAINT}")
        message(FATAL_ERROR "${result}\n${text}${error}")
    endif()
    return()
endif()
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT text STREQUAL expected)
    message(FATAL_ERROR "${result}\n${text}${error}")
endif()
