# Qt Linguist catalogues of the program's texts: translations/velmora_<language>.ts, kept up to date from the
# sources under src/ (lupdate reads the folders itself, so a new one needs no listing here).
#   update_translations  updates every .ts from the sources; commit the result
#   translations         compiles them into build/translations/*.qm, in every build
# The test translations/sources fails when lupdate cannot place a text or a .ts is behind the sources.
find_package(Qt6 REQUIRED COMPONENTS LinguistTools)

file(GLOB VELMORA_TS_FILES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/translations/*.ts)
set(lupdate_script ${CMAKE_COMMAND} -DLUPDATE=$<TARGET_FILE:Qt6::lupdate> -DROOT=${PROJECT_SOURCE_DIR})

add_custom_target(update_translations
    COMMAND ${lupdate_script} -P ${CMAKE_CURRENT_LIST_DIR}/UpdateTranslations.cmake
    COMMENT "Updating translations/*.ts from the sources"
    VERBATIM)

set(qm_files)
foreach(ts IN LISTS VELMORA_TS_FILES)
    get_filename_component(name ${ts} NAME_WE)
    set(qm ${PROJECT_BINARY_DIR}/translations/${name}.qm)
    add_custom_command(OUTPUT ${qm}
        COMMAND Qt6::lrelease -silent ${ts} -qm ${qm}
        DEPENDS ${ts} Qt6::lrelease
        COMMENT "Compiling translations/${name}.ts"
        VERBATIM)
    list(APPEND qm_files ${qm})
endforeach()
add_custom_target(translations ALL DEPENDS ${qm_files})
install(FILES ${qm_files} DESTINATION share/velmora/translations)

if(VELMORA_BUILD_TESTS)
    add_test(NAME translations/sources
        COMMAND ${lupdate_script} -DCHECK_IN=${PROJECT_BINARY_DIR}/translations/check
                -P ${CMAKE_CURRENT_LIST_DIR}/UpdateTranslations.cmake)
endif()
