# Warning and sanitizer flags shared by every target of the project.
add_library(zl3_build_flags INTERFACE)
target_compile_options(zl3_build_flags INTERFACE -Wall -Wextra)
if(ZL3_WERROR)
    target_compile_options(zl3_build_flags INTERFACE -Werror)
endif()
if(ZL3_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

# zl3_add_test(name SOURCES ... LIBS ...): one GoogleTest executable, each case registered in CTest.
function(zl3_add_test name)
    cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${T_SOURCES})
    target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main zl3_build_flags)
    if(CMAKE_CROSSCOMPILING)
        # Windows programs run under Wine (the toolchain's emulator): one test per program, so
        # that listing the cases does not start Wine at build time.
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES TIMEOUT 600)
    else()
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
    endif()
endfunction()
