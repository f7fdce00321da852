# One function for each kind of target, so that flags, Qt's code generators and the test environment stand in
# one place.
#
#   audiosetting_flags(target)                  warnings, sanitizers, log context
#   audiosetting_qt(target)                     audiosetting_flags + moc, uic, rcc + precompiled Qt headers
#   audiosetting_test(file LIBS lib... [ENV k=v...] [TIMEOUT s])
#                                               one QtTest executable from tests/<folder>/tst_<unit>.cpp
#   audiosetting_add_optional(folder)           add_subdirectory when the folder has a CMakeLists.txt

function(audiosetting_flags target)
    file(RELATIVE_PATH to_source ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR}/.)
    target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${AUDIOSETTING_WERROR}>:-Werror>
        # Log lines name files relative to the source root, whoever builds wherever; ccache hands the compiler paths
        # relative to the build folder.
        -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${CMAKE_BINARY_DIR}/= -ffile-prefix-map=${to_source}=)
    if(AUDIOSETTING_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=all
            -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=address,undefined)
    endif()
endfunction()

function(audiosetting_qt target)
    audiosetting_flags(${target})
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
    # Q_FOREACH-style keywords stay (the plug-in is written in the SIGNAL/SLOT kind); the log context is wanted
    # in release builds too.
    target_compile_definitions(${target} PRIVATE QT_MESSAGELOGCONTEXT)
    if(NOT AUDIOSETTING_PCH)
        return()
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE" AND NOT target STREQUAL "executable_headers")
        # Precompiled once for all programs; libraries differ in their flags and have their own.
        if(NOT TARGET executable_headers)
            file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/executable_headers.cpp CONTENT "int main() {}\n")
            add_executable(executable_headers ${CMAKE_BINARY_DIR}/executable_headers.cpp)
            audiosetting_qt(executable_headers)
            target_link_libraries(executable_headers PRIVATE Qt5::Widgets)
        endif()
        target_precompile_headers(${target} REUSE_FROM executable_headers)
    else()
        target_precompile_headers(${target} PRIVATE <QtWidgets>)
    endif()
endfunction()

function(audiosetting_test file)
    cmake_parse_arguments(arg "" "TIMEOUT" "LIBS;ENV" ${ARGN})
    get_filename_component(name ${file} NAME_WE)
    add_executable(${name} ${file})
    audiosetting_qt(${name})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE Qt5::Test ${arg_LIBS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QTEST_FUNCTION_TIMEOUT=900000;XDG_RUNTIME_DIR=/tmp;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;UBSAN_OPTIONS=print_stacktrace=1;${arg_ENV}")
endfunction()

macro(audiosetting_add_optional folder)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt)
        add_subdirectory(${folder})
    endif()
endmacro()
