# cmake -DSOURCE=.. -P vocabulary.cmake
# Fails unless other files repeat what the library defines: the schema every element and attribute,
# the header and the test of XMLAction its keys, and descriptions the bridge's id and the bound of
# nesting.

# names_in(FILE VARIABLE): the constants of a source that hold a name in lower case.
function(names_in file variable)
    file(READ ${file} source)
    set(constant "\n(inline )?(const QString|constexpr Property<[a-z ]+>) [^\n\"]+\"[a-z_]+\"")
    string(REGEX MATCHALL "${constant}" constants "${source}")
    list(TRANSFORM constants REPLACE ".*\"([a-z_]+)\"" "\\1")
    set(${variable} ${constants} PARENT_SCOPE)
endfunction()

# must_hold(FILE PATTERN MESSAGE)
function(must_hold file pattern message)
    file(READ ${SOURCE}/${file} text)
    if(NOT text MATCHES "${pattern}")
        message(SEND_ERROR "${file} ${message}")
    endif()
endfunction()

file(READ ${SOURCE}/schema/tqxml.rnc schema)
file(READ ${SOURCE}/schema/tqxml-items.rnc items)
string(APPEND schema "${items}")
file(GLOB units ${SOURCE}/xml/*.cpp ${SOURCE}/xml/*_p.h)
foreach(unit IN LISTS units)
    names_in(${unit} names)
    list(APPEND all ${names})
    foreach(name IN LISTS names)
        if(NOT schema MATCHES "(element|attribute) (tq:)?${name} ")
            message(SEND_ERROR "${unit}: \"${name}\" is not in schema/*.rnc")
        endif()
    endforeach()
endforeach()

names_in(${SOURCE}/xml/xmlaction.cpp names)
foreach(name IN LISTS names)
    must_hold(include/xmlaction.h "\"${name}\"" "does not name \"${name}\"")
    must_hold(tests/tst_xmlaction.cpp "[^a-z_]${name}[^a-z_]" "does not test \"${name}\"")
endforeach()

file(STRINGS ${SOURCE}/xml/xmlrouter.cpp line REGEX "COMM_SERVER_ID = ")
string(REGEX REPLACE ".* = (-?[0-9]+).*" "\\1" id "${line}")
foreach(file IN ITEMS
    include/xmlrouter.h include/xmlagent.h include/xmlcommserver.h schema/tqxml.rnc)
    must_hold(${file} " ${id}[ ,.\n]" "does not say the bridge's id, ${id}")
endforeach()

file(STRINGS ${SOURCE}/serverlib/tqtypes.h line REGEX "TQMAX_NESTING = ")
string(REGEX REPLACE ".* = (-?[0-9]+).*" "\\1" bound "${line}")
must_hold(doc/tqxml.1.in "deeper than ${bound} levels" "does not say the bound of nesting, ${bound}")

list(LENGTH all count)
if(count LESS 40 OR NOT names)
    message(FATAL_ERROR "only ${count} names were found in xml/")
endif()
