# cmake -DSOURCE=.. -DWORK=.. -DSHARED=ON|OFF -DQT=5|6 -DCXX=.. [-DLAUNCHER=..] -P subproject.cmake
# Builds the library as a part of another project, and runs the README's program there. Neither
# tests nor anything to install may come with it.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
file(REMOVE_RECURSE ${WORK}/installed)

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/subproject -B ${WORK} -G Ninja
    -DSOURCE=${SOURCE} -DSHARED=${SHARED} -DQT_VERSION_MAJOR=${QT}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
run(${CMAKE_COMMAND} --build ${WORK})
run(${WORK}/your_program)
if(NOT text MATCHES "Effi Briest")
    message(FATAL_ERROR "not the sample's books:\n${text}")
endif()

run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK} --show-only)
if(NOT text MATCHES "Total Tests: 0")
    message(FATAL_ERROR "tests of the library's own:\n${text}")
endif()
run(${CMAKE_COMMAND} --install ${WORK} --prefix ${WORK}/installed)
if(EXISTS ${WORK}/installed)
    message(FATAL_ERROR "something is installed:\n${text}")
endif()
