# kestrune_test(NAME SOURCES ... [LINK ...] [TIMEOUT SECONDS] [LABELS ...])
# One QtTest program. It runs without a screen and in a home of its own, and a warning that it did not announce
# by QTest::ignoreMessage fails it. The label "threads" puts it under the ThreadSanitizer too, in ./dev sanitize.
# Any but the one by which the platform without a screen meets each window that has a fixed size: "This plugin ...".
set(unannouncedWarning
    "QWARN  : [^\n]*\\) ([^T]|T[^h]|Th[^i]|Thi[^s]|This[^ ]|This [^p]|This p[^l])")

function(kestrune_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    if(KESTRUNE_SANITIZE)
        math(EXPR arg_TIMEOUT "5 * ${arg_TIMEOUT}")
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINK} Qt5::Test)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${arg_TIMEOUT}
        LABELS "${arg_LABELS}"
        FAIL_REGULAR_EXPRESSION "${unannouncedWarning};QCRITICAL"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;HOME=${CMAKE_CURRENT_BINARY_DIR}/home-${name};XDG_RUNTIME_DIR=${CMAKE_CURRENT_BINARY_DIR}/home-${name}")
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/home-${name})
    file(CHMOD ${CMAKE_CURRENT_BINARY_DIR}/home-${name} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
endfunction()
