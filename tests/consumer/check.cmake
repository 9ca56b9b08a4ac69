# cmake -DSOURCE=.. -DBUILD=.. -DWORK=.. -DPACKAGE=.. -DPC=.. -P check.cmake
# Installs BUILD into an empty folder, and builds and runs the README's program against that, once
# through CMake and once through pkg-config.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/consumer)

function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text ERROR_VARIABLE error RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}: ${result}\n${text}${error}")
    endif()
    set(text "${text}" PARENT_SCOPE)
endfunction()

# The text between the first "```LANGUAGE" line of the README and the line that ends it.
function(readme_block language variable)
    file(READ ${SOURCE}/README.md readme)
    string(FIND "${readme}" "```${language}\n" start)
    if(start EQUAL -1)
        message(FATAL_ERROR "no block of ${language} in the README")
    endif()
    string(SUBSTRING "${readme}" ${start} -1 block)
    string(REPLACE "```${language}\n" "" block "${block}")
    string(FIND "${block}" "```" end)
    string(SUBSTRING "${block}" 0 ${end} block)
    set(${variable} "${block}" PARENT_SCOPE)
endfunction()

readme_block(cpp program)
file(READ ${SOURCE}/examples/1_first_agent.cpp example)
if(NOT program STREQUAL example)
    message(FATAL_ERROR "the README's program is not that of examples/1_first_agent.cpp")
endif()
readme_block(cmake linking)
string(REPLACE "find_package(TQXml " "find_package(${PACKAGE} " linking "${linking}")
file(WRITE ${WORK}/consumer/main.cpp "${program}")
file(WRITE ${WORK}/consumer/link.cmake "${linking}")
file(COPY ${CMAKE_CURRENT_LIST_DIR}/CMakeLists.txt DESTINATION ${WORK}/consumer)

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/installed)

run(${CMAKE_COMMAND} -S ${WORK}/consumer -B ${WORK}/cmake
    -DCMAKE_PREFIX_PATH=${WORK}/installed -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/cmake)
run(${WORK}/cmake/your_program)
set(with_cmake "${text}")

file(GLOB_RECURSE pc ${WORK}/installed/*/${PC}.pc)
get_filename_component(pc "${pc}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc})
run(pkg-config --cflags --libs ${PC})
separate_arguments(flags UNIX_COMMAND "${text}")
run(${CXX} -std=c++17 -fPIC ${WORK}/consumer/main.cpp ${flags} -o ${WORK}/with_pkgconfig)
get_filename_component(libraries ${pc} DIRECTORY)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libraries} ${WORK}/with_pkgconfig)

string(REGEX MATCHALL "\n" books "${text}")
list(LENGTH books count)
if(NOT text STREQUAL with_cmake OR NOT count EQUAL 60 OR NOT text MATCHES "Effi Briest")
    message(FATAL_ERROR "not the sample's books:\n${with_cmake}\n${text}")
endif()
