# run(COMMAND...): sets text to what it prints; ends the script unless it succeeds.
function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text ERROR_VARIABLE error RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}: ${result}\n${text}${error}")
    endif()
    set(text "${text}" PARENT_SCOPE)
endfunction()
