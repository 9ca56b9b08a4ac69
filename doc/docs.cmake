# cmake -DOUT=FOLDER -P doc/docs.cmake
# Writes the reference documentation into FOLDER/html, and a help file, FOLDER/libtqxml.qch, where
# Qt's generator is installed.
get_filename_component(source ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
get_filename_component(OUT ${OUT} ABSOLUTE)
file(STRINGS ${source}/CMakeLists.txt project REGEX "^project\\(tqxml VERSION ")
string(REGEX MATCH "[0-9]+\\.[0-9]+\\.[0-9]+" version "${project}")

find_program(HELP_GENERATOR qhelpgenerator PATHS /usr/lib/qt6/libexec NO_DEFAULT_PATH)
set(help "GENERATE_QHP = NO")
if(HELP_GENERATOR)
    set(help "GENERATE_QHP = YES\nQHG_LOCATION = ${HELP_GENERATOR}\nQCH_FILE = ../libtqxml.qch")
else()
    message(NOTICE "docs: no help file: qhelpgenerator of Qt 6 is not installed")
endif()
file(REMOVE_RECURSE ${OUT}/html)
file(WRITE ${OUT}/Doxyfile "@INCLUDE = doc/Doxyfile
PROJECT_NUMBER = ${version}
OUTPUT_DIRECTORY = ${OUT}
${help}
")
execute_process(COMMAND doxygen ${OUT}/Doxyfile WORKING_DIRECTORY ${source}
    COMMAND_ERROR_IS_FATAL ANY)
