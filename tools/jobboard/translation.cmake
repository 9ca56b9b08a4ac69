# cmake -DLUPDATE=.. -DSOURCE=.. [-DCHECK=SCRATCH-FILE] -P translation.cmake
# Brings the texts of the sources into the translation; or, with CHECK, fails if a text of the sources
# is not translated, or a translation has no text any more.
set(translation ${SOURCE}/tools/jobboard/jobboard_de.ts)
set(options -locations none -target-language de)
if(DEFINED CHECK)
    file(COPY_FILE ${translation} ${CHECK})
    set(translation ${CHECK})
else()
    list(APPEND options -no-obsolete)
endif()
execute_process(
    COMMAND ${LUPDATE} ${options} -extensions cpp,h ${SOURCE}/tools/jobboard ${SOURCE}/monitor
        ${SOURCE}/serverlib/embedded/storageclasses.cpp -ts ${translation}
    COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED CHECK)
    file(READ ${translation} text)
    string(REPLACE ";" "," text "${text}")
    string(REGEX MATCHALL "<source>[^<]*</source>[^<]*<translation( type=|></)" faults "${text}")
    foreach(fault IN LISTS faults)
        string(REGEX REPLACE "<source>([^<]*)<.*" "\\1" fault "${fault}")
        message(NOTICE "not translated, or not in the sources any more: ${fault}")
    endforeach()
    if(faults)
        message(FATAL_ERROR "./dev translate updates tools/jobboard/jobboard_de.ts")
    endif()
endif()
