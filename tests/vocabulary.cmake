# cmake -DSOURCE=.. -P vocabulary.cmake
# Fails unless every element and attribute that the library names in xml/ stands in the schema, and
# every key of an action in include/xmlaction.h and tests/tst_xmlaction.cpp too.

# names_in(FILE VARIABLE): the constants of a source that hold a name in lower case.
function(names_in file variable)
    file(READ ${file} source)
    string(REGEX MATCHALL "\n(inline )?(const QString|constexpr Property<[a-z ]+>) [^\n\"]+\"[a-z_]+\""
        constants "${source}")
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

list(LENGTH all count)
if(count LESS 40 OR NOT names)
    message(FATAL_ERROR "only ${count} names were found in xml/")
endif()
