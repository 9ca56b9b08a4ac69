# cmake -DSOURCE=.. [-DBUILD=.. -DLIBDIR=.. | "-DDEBS=A.deb;B.deb;.." -DLIBDIR=..] -DWORK=..
#     -DPACKAGE=.. -DPC=.. -DCXX=.. -P check.cmake
# Installs the build, or unpacks the Debian packages, into an empty folder, and builds and runs the
# README's program against that, once through CMake and once through pkg-config. LIBDIR is the
# folder of libraries below the prefix. Without either against what is installed on this machine.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/consumer)

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
    set(readme "${readme}" PARENT_SCOPE)
endfunction()

readme_block(cpp program)
file(READ ${SOURCE}/examples/1_first_agent.cpp example)
if(NOT program STREQUAL example)
    message(FATAL_ERROR "the README's program is not that of examples/1_first_agent.cpp")
endif()
readme_block(cmake lists)
file(READ ${CMAKE_CURRENT_LIST_DIR}/CMakeLists.txt own)
string(REGEX MATCH "\ng\\+\\+ [^\n]*" compile "${readme}")
if(NOT lists STREQUAL own OR NOT compile)
    message(FATAL_ERROR "the README does not show this folder's CMakeLists.txt, or calls no g++")
endif()
string(REPLACE "find_package(TQXml " "find_package(${PACKAGE} " lists "${lists}")
string(REPLACE "libs tqxml" "libs ${PC}" compile "${compile}")
file(WRITE ${WORK}/consumer/main.cpp "${program}")
file(WRITE ${WORK}/consumer/CMakeLists.txt "${lists}")

set(prefix ${WORK}/installed)
set(unpacked "")  # libraries of packages know each other only where packages install them
if(DEFINED DEBS)
    string(APPEND prefix /usr)
    set(unpacked ${prefix}/${LIBDIR})
    foreach(deb IN LISTS DEBS)
        run(dpkg-deb --extract ${deb} ${WORK}/installed)
    endforeach()
elseif(DEFINED BUILD)
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
endif()

run(${CMAKE_COMMAND} -S ${WORK}/consumer -B ${WORK}/cmake
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/cmake)
run(${WORK}/cmake/your_program)
set(with_cmake "${text}")

if(DEFINED LIBDIR)
    set(libraries ${prefix}/${LIBDIR})
    set(ENV{PKG_CONFIG_PATH} ${libraries}/pkgconfig)
endif()
run(sh -c "cd ${WORK}/consumer && ${compile}")
run(${CMAKE_COMMAND} -E env "LD_LIBRARY_PATH=${libraries}" ${WORK}/consumer/your_program)

string(REGEX MATCHALL "\n" books "${text}")
list(LENGTH books count)
if(NOT text STREQUAL with_cmake OR NOT count EQUAL 60 OR NOT text MATCHES "Effi Briest")
    message(FATAL_ERROR "not the sample's books:\n${with_cmake}\n${text}")
endif()

# The packet monitor, of which an application with windows is built in the same two ways. It stays
# open: the program timeout says so with 124.
set(ENV{QT_QPA_PLATFORM} offscreen)
file(READ ${CMAKE_CURRENT_LIST_DIR}/monitor/CMakeLists.txt lists)
string(REPLACE "find_package(TQXml " "find_package(${PACKAGE} " lists "${lists}")
file(WRITE ${WORK}/window/CMakeLists.txt "${lists}")
file(COPY_FILE ${SOURCE}/examples/11_monitor.cpp ${WORK}/window/main.cpp)
run(${CMAKE_COMMAND} -S ${WORK}/window -B ${WORK}/window_cmake
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/window_cmake)
run(sh -c "LD_LIBRARY_PATH=${unpacked} timeout 2 ${WORK}/window_cmake/your_window || test $? = 124")
string(REPLACE "tqxml" "tqxml-monitor" monitor_pc ${PC})
run(sh -c "cd ${WORK}/window && ${CXX} -std=c++17 -fPIC main.cpp -o your_window \
    $(pkg-config --cflags --libs ${monitor_pc})")
run(sh -c "LD_LIBRARY_PATH=${libraries} timeout 2 ${WORK}/window/your_window || test $? = 124")
