# cmake -DLIBRARY=.. "-DHEADERS=A;B;.." -DNM=.. -P symbols.cmake
# The library exports the members, tables and type information of the classes that those headers
# export, each of them, and nothing else.
foreach(header IN LISTS HEADERS)
    file(STRINGS ${header} lines REGEX "^class TQXML_EXPORT ")
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^class TQXML_EXPORT ([A-Za-z]+).*" "\\1" class "${line}")
        list(APPEND classes ${class})
    endforeach()
endforeach()
list(JOIN classes "|" any)

execute_process(COMMAND ${NM} -DC --defined-only ${LIBRARY}
    OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
string(REPLACE "[abi:cxx11]" "" symbols "${symbols}")
string(REGEX REPLACE "[][;]" "_" symbols "${symbols}")
string(REGEX REPLACE "\n" ";" symbols "${symbols}")
set(others ${symbols})
list(FILTER others EXCLUDE REGEX
    "^[0-9a-f]+ . ((vtable|typeinfo|typeinfo name) for (${any})|(${any})::[^:(]+(\\(.*)?)$")
list(REMOVE_ITEM others "")
foreach(class IN LISTS classes)
    set(members ${symbols})
    list(FILTER members INCLUDE REGEX "[0-9a-f]+ T ${class}::~${class}\\(")
    if(NOT members)
        list(APPEND missing ${class})
    endif()
endforeach()
if(NOT result EQUAL 0 OR NOT classes OR missing OR others)
    list(JOIN others "\n" others)
    message(FATAL_ERROR "not exported: ${missing}\nexported beyond the classes:\n${others}")
endif()
