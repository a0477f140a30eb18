# Runs lupdate over the sources for every translations/*.ts, the one way the build and its test run it.
#   cmake -DLUPDATE=<lupdate> -DROOT=<source folder> [-DCHECK_IN=<work folder>] -P UpdateTranslations.cmake
# Without CHECK_IN the .ts files are updated in place. With it, copies are updated there instead, and the run
# fails when lupdate warns (a text it cannot give a context, which no translation would ever reach) or when a
# copy differs from its .ts (texts added or dropped since the last update).
file(GLOB ts_files ${ROOT}/translations/*.ts)
if(NOT ts_files)
    message(FATAL_ERROR "no .ts file in ${ROOT}/translations")
endif()
if(CHECK_IN)
    file(REMOVE_RECURSE ${CHECK_IN})
    file(MAKE_DIRECTORY ${CHECK_IN})
endif()
foreach(ts IN LISTS ts_files)
    get_filename_component(name ${ts} NAME)
    set(target ${ts})
    if(CHECK_IN)
        set(target ${CHECK_IN}/${name})
        file(COPY_FILE ${ts} ${target})
    endif()
    # No line numbers in the .ts: it changes only when a text does.
    execute_process(COMMAND ${LUPDATE} -silent -locations none -no-obsolete ${ROOT}/src -ts ${target}
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "lupdate failed on ${name}:\n${output}")
    endif()
    if(NOT CHECK_IN)
        continue()
    endif()
    # A warning names the file and line: "src/cli/main.cpp:19: tr() cannot be called without context".
    if(output MATCHES ":[0-9]+: ")
        message(FATAL_ERROR "lupdate cannot place these texts:\n${output}")
    endif()
    file(READ ${ts} committed)
    file(READ ${target} updated)
    if(NOT committed STREQUAL updated)
        message(FATAL_ERROR "translations/${name} is behind the sources; bring it up to date with "
            "cmake --build build --target update_translations")
    endif()
endforeach()
