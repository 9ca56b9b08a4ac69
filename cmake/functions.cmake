# What several folders need.

# tqxml_link_over(TARGET SERVER): links the library itself, over the server library SERVER (or its
# declarations, where the target defines them) in place of the embedded one.
function(tqxml_link_over target server)
    add_dependencies(${target} tqxml)
    target_include_directories(${target} PRIVATE
        $<TARGET_PROPERTY:tqxml,INTERFACE_INCLUDE_DIRECTORIES>)
    # Not the target tqxml, which brings the embedded server library along. A library that the
    # program itself names is loaded first, and serves tqxml, too: so it is named in any case.
    target_link_options(${target} PRIVATE LINKER:--no-as-needed)
    target_link_libraries(${target} PRIVATE $<TARGET_LINKER_FILE:tqxml> ${server} tqxml_qt)
endfunction()

# tqxml_left_out(WHAT REASON): says which tests this build does not have.
function(tqxml_left_out what reason)
    message(NOTICE "Tests left out: ${what}: ${reason}")
endfunction()

# tqxml_find_program(VARIABLE NAME TESTS): a program that those tests need. Without it they are left
# out; in CI that is a test that fails.
function(tqxml_find_program variable name tests)
    find_program(${variable} ${name})
    if(NOT ${variable})
        tqxml_left_out("${tests}" "${name} is not installed")
        if("$ENV{CI}" STREQUAL "true")
            add_test(NAME ${name}_is_installed COMMAND ${CMAKE_COMMAND} -E false)
        endif()
    endif()
endfunction()
