# One function for each kind of target, so that flags, Qt's code generators and the test environment stand in
# one place.
#
#   audiosetting_flags(target)                  warnings, sanitizers
#   audiosetting_qt(target [MOC])               audiosetting_flags + log context + precompiled Qt headers; MOC: what the
#                                               target lists is searched for Q_OBJECT, forms and resources
#   audiosetting_moc(target file...)            moc of one file, for those that have no need of a search: x.moc of x.cpp,
#                                               which includes it; x.h is compiled with the target
#   audiosetting_test(file LIBS lib... [ENV k=v...] [TIMEOUT s] [NO_WIDGETS])
#                                               one QtTest executable from tests/<folder>/tst_<unit>.cpp
#   audiosetting_fixture(file.h LIBS lib...)    the meta-object of a base class that tests share, as a library of its name
#   audiosetting_add_optional(folder)           add_subdirectory when the folder has a CMakeLists.txt

function(audiosetting_flags target)
    file(RELATIVE_PATH to_source ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR}/.)
    target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${AUDIOSETTING_WERROR}>:-Werror>
        # Log lines name files relative to the source root, whoever builds wherever; ccache hands the compiler paths
        # relative to the build folder.
        -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${CMAKE_BINARY_DIR}/= -ffile-prefix-map=${to_source}=)
    if(AUDIOSETTING_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${AUDIOSETTING_SANITIZE} -fno-sanitize-recover=all
            -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${AUDIOSETTING_SANITIZE})
    endif()
endfunction()

# The log context is wanted in release builds, too.
function(audiosetting_qt_flags target)
    audiosetting_flags(${target})
    target_compile_definitions(${target} PRIVATE QT_MESSAGELOGCONTEXT)
endfunction()

# Code of a test runs for moments, and compiling it well would take longer; what it tests is compiled as it ships. Tests
# without widgets compute: they measure sound.
function(audiosetting_test_flags target)
    cmake_parse_arguments(arg "NO_WIDGETS" "" "" ${ARGN})
    audiosetting_qt_flags(${target})
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:$<IF:$<BOOL:${arg_NO_WIDGETS}>,-O1,-O0>>)
endfunction()

# Headers that are compiled once for all targets with the same flags. Each user pays for the whole set, so one holds what
# most of its users include and no more.
function(audiosetting_precompiled target set)
    if(NOT AUDIOSETTING_PCH)
        return()
    endif()
    if(NOT TARGET ${set})
        file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/${set}.cpp CONTENT "")
        add_library(${set} OBJECT ${CMAKE_BINARY_DIR}/${set}.cpp)
        if(set STREQUAL "product_headers")
            audiosetting_qt_flags(${set})
            target_link_libraries(${set} PRIVATE Qt5::Widgets)
            target_precompile_headers(${set} PRIVATE <QApplication> <QButtonGroup> <QDebug> <QLabel> <QMouseEvent>
                <QPainter> <QPushButton> <QScopedPointer> <QStringList> <QTimer> <QVariant> <QVector> <algorithm> <array> <cmath>)
        elseif(set STREQUAL "test_headers")
            audiosetting_test_flags(${set})
            target_link_libraries(${set} PRIVATE Qt5::Test Qt5::Widgets)
            target_precompile_headers(${set} PRIVATE <QtTest> <QApplication> <QLabel> <QPushButton>)
        elseif(set STREQUAL "test_headers_without_widgets")
            audiosetting_test_flags(${set} NO_WIDGETS)
            target_link_libraries(${set} PRIVATE Qt5::Test)
            target_precompile_headers(${set} PRIVATE <QtTest>)
        endif()
    endif()
    target_precompile_headers(${target} REUSE_FROM ${set})
endfunction()

function(audiosetting_qt target)
    cmake_parse_arguments(arg "MOC" "" "" ${ARGN})
    audiosetting_qt_flags(${target})
    audiosetting_precompiled(${target} product_headers)
    if(NOT arg_MOC)
        return()
    endif()
    # A file that is new to the target makes the code generators run again; they don't see it by themselves.
    get_target_property(sources ${target} SOURCES)
    set(files)
    foreach(source IN LISTS sources)
        get_filename_component(file ${source} ABSOLUTE)
        if(EXISTS ${file})
            list(APPEND files ${file})
        endif()
    endforeach()
    set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON AUTOGEN_TARGET_DEPENDS "${files}")
endfunction()

function(audiosetting_moc target)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/moc)
    file(MAKE_DIRECTORY ${folder})
    foreach(file IN LISTS ARGN)
        get_filename_component(file ${file} ABSOLUTE)
        get_filename_component(unit ${file} NAME_WE)
        if(file MATCHES "\\.h$")
            set(made ${folder}/moc_${unit}.cpp)
        else()
            set(made ${folder}/${unit}.moc)
        endif()
        # Of what is included moc wants to know the interfaces of applications, which are the platform's.
        add_custom_command(OUTPUT ${made}
            COMMAND Qt5::moc -I${CMAKE_SOURCE_DIR} -I${CMAKE_SOURCE_DIR}/platform/interface -o ${made} ${file}
            DEPENDS ${file} VERBATIM COMMENT "moc ${unit}")
        target_sources(${target} PRIVATE ${made})
    endforeach()
    target_include_directories(${target} PRIVATE ${folder})
endfunction()

function(audiosetting_test file)
    cmake_parse_arguments(arg "NO_WIDGETS" "TIMEOUT" "LIBS;ENV" ${ARGN})
    get_filename_component(name ${file} NAME_WE)
    add_executable(${name} ${file})
    audiosetting_moc(${name} ${file})
    if(arg_NO_WIDGETS)
        audiosetting_test_flags(${name} NO_WIDGETS)
        audiosetting_precompiled(${name} test_headers_without_widgets)
    else()
        audiosetting_test_flags(${name})
        audiosetting_precompiled(${name} test_headers)
    endif()
    if(AUDIOSETTING_GOLD)
        target_link_options(${name} PRIVATE -fuse-ld=gold)
    endif()
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE Qt5::Test ${arg_LIBS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    set(races tsan_widgets)
    if(arg_NO_WIDGETS)
        set(races tsan)
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    if(AUDIOSETTING_SANITIZE)
        math(EXPR arg_TIMEOUT "4 * ${arg_TIMEOUT}")
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QTEST_FUNCTION_TIMEOUT=900000;XDG_RUNTIME_DIR=/tmp;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;UBSAN_OPTIONS=print_stacktrace=1;TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/${races}.supp;${arg_ENV}")
endfunction()

function(audiosetting_fixture file)
    cmake_parse_arguments(arg "" "" "LIBS" ${ARGN})
    get_filename_component(name ${file} NAME_WE)
    add_library(${name} OBJECT ${file})
    audiosetting_test_flags(${name})
    audiosetting_precompiled(${name} test_headers)
    audiosetting_moc(${name} ${file})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC Qt5::Test ${arg_LIBS})
endfunction()

macro(audiosetting_add_optional folder)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt)
        add_subdirectory(${folder})
    endif()
endmacro()

# Tests are many and linked as often as what they test changes; this linker takes a fifth of the other's time.
find_program(AUDIOSETTING_GOLD ld.gold)
