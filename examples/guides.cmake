# Fails unless every block of C++ in a guide (GUIDES/*.md) stands, apart from indentation, in one
# of the example programs (EXAMPLES/*.cpp, EXAMPLES/*/*.cpp and their headers).

# The text of a file without the blanks at the starts of its lines.
function(read_unindented file variable)
    file(READ ${file} text)
    string(REGEX REPLACE "\n +" "\n" text "\n${text}")
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

file(GLOB sources ${EXAMPLES}/*.cpp ${EXAMPLES}/*/*.cpp ${EXAMPLES}/*/*.h)
foreach(source IN LISTS sources)
    read_unindented(${source} text)
    string(APPEND code "${text}")
endforeach()

function(check_guide guide)
    read_unindented(${guide} rest)
    string(FIND "${rest}" "\n```cpp\n" start)
    while(NOT start EQUAL -1)
        math(EXPR start "${start} + 7")  # the line feed before the code counts as its own
        string(SUBSTRING "${rest}" ${start} -1 rest)
        string(FIND "${rest}" "\n```\n" end)
        if(end EQUAL -1)
            message(FATAL_ERROR "${guide}: a block of code does not end")
        endif()
        math(EXPR end "${end} + 1")
        string(SUBSTRING "${rest}" 0 ${end} block)
        string(FIND "${code}" "${block}" found)
        if(found EQUAL -1)
            string(REPLACE "\n" "\n  " shown "${block}")  # CMake leaves indented lines alone
            message(SEND_ERROR "${guide}: no example has this code:${shown}")
        endif()
        string(SUBSTRING "${rest}" ${end} -1 rest)
        string(FIND "${rest}" "\n```cpp\n" start)
    endwhile()
endfunction()

file(GLOB guides ${GUIDES}/*.md)
if(NOT sources OR NOT guides)
    message(FATAL_ERROR "no examples in ${EXAMPLES}, or no guides in ${GUIDES}")
endif()
foreach(guide IN LISTS guides)
    check_guide(${guide})
endforeach()
