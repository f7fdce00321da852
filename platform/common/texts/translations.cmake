# Texts: ts/audiosetting_<code>.ts -> <code>.qm in the build folder -> resource :/audiosetting_texts/<code>.qm in
# libcommon. A new language is a new .ts file and its row in language.cpp.
find_package(Qt5 5.15 REQUIRED COMPONENTS LinguistTools)

file(GLOB ts_files CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/ts/audiosetting_*.ts)
set(texts_dir ${CMAKE_CURRENT_BINARY_DIR}/texts)
file(MAKE_DIRECTORY ${texts_dir})
set(texts_qrc "<RCC>\n<qresource prefix=\"/audiosetting_texts\">\n")
set(qm_files "")
foreach(ts_file ${ts_files})
    get_filename_component(code ${ts_file} NAME_WE)
    string(REGEX REPLACE "^audiosetting_" "" code ${code})
    # Ids are the keys. Nothing unfinished gets in: -nounfinished leaves it out, and a test misses it.
    add_custom_command(OUTPUT ${texts_dir}/${code}.qm
        COMMAND Qt5::lrelease -silent -idbased -nounfinished ${ts_file} -qm ${texts_dir}/${code}.qm
        DEPENDS ${ts_file} COMMENT "Translating into ${code}" VERBATIM)
    list(APPEND qm_files ${texts_dir}/${code}.qm)
    string(APPEND texts_qrc "<file>${code}.qm</file>\n")
endforeach()
file(CONFIGURE OUTPUT ${texts_dir}/texts.qrc CONTENT "${texts_qrc}</qresource>\n</RCC>\n" @ONLY)
add_custom_command(OUTPUT ${texts_dir}/qrc_texts.cpp
    COMMAND Qt5::rcc -name audiosetting_texts -o ${texts_dir}/qrc_texts.cpp ${texts_dir}/texts.qrc
    DEPENDS ${texts_dir}/texts.qrc ${qm_files} VERBATIM)
set_source_files_properties(${texts_dir}/qrc_texts.cpp PROPERTIES SKIP_AUTOGEN ON SKIP_PRECOMPILE_HEADERS ON)
target_sources(common PRIVATE ${texts_dir}/qrc_texts.cpp)
