# cmake -DBASELINES=.. -DLIBRARIES=..|.. -DWORK=.. -DABIDIFF=.. -P abi.cmake
# The binary interface is the one that was described last; ./dev abi describes it anew.
string(REPLACE "|" ";" LIBRARIES "${LIBRARIES}")
foreach(library IN LISTS LIBRARIES)
    get_filename_component(name ${library} NAME_WE)
    execute_process(COMMAND gzip -dc ${BASELINES}/${name}.abi.gz OUTPUT_FILE ${WORK}/${name}.abi
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${ABIDIFF} ${WORK}/${name}.abi ${library}
        OUTPUT_VARIABLE changes ERROR_VARIABLE error RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${name}: ${result}\n${changes}${error}")
    endif()
endforeach()
