# tqxml_harden(TARGET...): flags against the exploitation of faults. Sanitizers and benchmarks go
# without. tests/hardening.sh checks the packages for what the flags leave behind.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

add_library(tqxml_hardening INTERFACE)
if(TQXML_HARDENING AND NOT TQXML_SANITIZE AND NOT TQXML_BENCH)
    check_pie_supported()
    foreach(flag IN ITEMS
        -fstack-protector-strong
        -fstack-clash-protection
        -fcf-protection  # x86
        -mbranch-protection=standard  # 64-bit Arm
    )
        string(MAKE_C_IDENTIFIER TQXML_HAS${flag} known)
        check_cxx_compiler_flag(${flag} ${known})
        target_compile_options(tqxml_hardening INTERFACE $<$<BOOL:${${known}}>:${flag}>)
    endforeach()
    set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)  # without, there is but a warning
    target_compile_options(tqxml_hardening INTERFACE
        $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
    target_link_options(tqxml_hardening INTERFACE
        -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()

function(tqxml_harden)
    foreach(target IN LISTS ARGN)
        set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tqxml_hardening>)
    endforeach()
endfunction()
