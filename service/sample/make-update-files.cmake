# Builds the update files the service serves under /files/ for the sample catalogue, and the older
# versions of the same apps (for a demo machine to have something to update):
#   cmake -DOUT=<dir> -P make-update-files.cmake
# OUT/files/   one new version per archive kind, named as the sample catalogue's links say
# OUT/installed/Applications/   the old versions as installed bundles
# Needs bsdtar (xar and cpio archives), gzip and xorriso (the disk image); the rest is CMake's own.
cmake_minimum_required(VERSION 3.25)
if(NOT OUT)
    message(FATAL_ERROR "pass -DOUT=<dir>")
endif()

set(new_version 2.0)
set(old_version 1.0)
# name;bundle id suffix;archive file (must agree with sample-catalogue.json)
set(apps
    "Velmora Notes|notes|VelmoraNotes-2.0.zip"
    "Velmora Paint|paint|VelmoraPaint-2.0.tar.gz"
    "Velmora Clock|clock|VelmoraClock-2.0.tar.bz2"
    "Velmora Radio|radio|VelmoraRadio-2.0.tbz"
    "Velmora Reader|reader|VelmoraReader-2.0.dmg"
    "Velmora Atlas|atlas|VelmoraAtlas-2.0.pkg")

# A missing tool leaves out the files that need it, with a warning, rather than failing the whole build.
find_program(BSDTAR bsdtar)
find_program(GZIP gzip)
find_program(XORRISO xorriso)

set(work ${OUT}/work)
file(REMOVE_RECURSE ${work} ${OUT}/files ${OUT}/installed)
file(MAKE_DIRECTORY ${work} ${OUT}/files ${OUT}/installed/Applications)

# Writes NAME.app under DIR with an Info.plist, an executable and a resource.
function(make_bundle dir name id version)
    set(contents "${dir}/${name}.app/Contents")
    file(MAKE_DIRECTORY "${contents}/MacOS" "${contents}/Resources")
    file(WRITE "${contents}/Info.plist" "<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">
<plist version=\"1.0\">
<dict>
	<key>CFBundleExecutable</key>
	<string>${name}</string>
	<key>CFBundleIdentifier</key>
	<string>com.velmora.sample.${id}</string>
	<key>CFBundleName</key>
	<string>${name}</string>
	<key>CFBundlePackageType</key>
	<string>APPL</string>
	<key>CFBundleShortVersionString</key>
	<string>${version}</string>
	<key>CFBundleVersion</key>
	<string>${version}</string>
</dict>
</plist>
")
    file(WRITE "${contents}/MacOS/${name}" "#!/bin/sh\necho '${name} ${version}'\n")
    file(CHMOD "${contents}/MacOS/${name}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
         WORLD_READ WORLD_EXECUTE)
    file(WRITE "${contents}/Resources/readme.txt" "${name} ${version}, a sample app of the Velmora catalogue.\n")
endfunction()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}")
    endif()
endfunction()

foreach(app IN LISTS apps)
    string(REPLACE "|" ";" fields "${app}")
    list(GET fields 0 name)
    list(GET fields 1 id)
    list(GET fields 2 archive)
    make_bundle(${OUT}/installed/Applications "${name}" ${id} ${old_version})
    set(stage ${work}/${id})
    make_bundle(${stage} "${name}" ${id} ${new_version})
    set(target ${OUT}/files/${archive})
    if(archive MATCHES "\\.zip$")
        run(${CMAKE_COMMAND} -E chdir ${stage} ${CMAKE_COMMAND} -E tar cf ${target} --format=zip "${name}.app")
    elseif(archive MATCHES "\\.tar\\.gz$")
        run(${CMAKE_COMMAND} -E chdir ${stage} ${CMAKE_COMMAND} -E tar czf ${target} "${name}.app")
    elseif(archive MATCHES "\\.(tar\\.bz2|tbz)$")
        run(${CMAKE_COMMAND} -E chdir ${stage} ${CMAKE_COMMAND} -E tar cjf ${target} "${name}.app")
    elseif(archive MATCHES "\\.dmg$" AND NOT XORRISO)
        message(WARNING "xorriso not found: ${archive} is not made")
    elseif(archive MATCHES "\\.pkg$" AND NOT (BSDTAR AND GZIP))
        message(WARNING "bsdtar or gzip not found: ${archive} is not made")
    elseif(archive MATCHES "\\.dmg$")
        # An ISO/HFS+ hybrid that 7zz opens; like a real image it carries a link to /Applications.
        file(CREATE_LINK /Applications ${stage}/Applications SYMBOLIC)
        run(${XORRISO} -as mkisofs -quiet -hfsplus -R -V "${name}" -o ${target} ${stage})
    elseif(archive MATCHES "\\.pkg$")
        # A flat package (xar) whose gzip+cpio payload holds Applications/NAME.app.
        set(root ${work}/${id}-root)
        set(flat ${work}/${id}-flat)
        file(MAKE_DIRECTORY ${root}/Applications ${flat}/${id}.pkg)
        file(RENAME "${stage}/${name}.app" "${root}/Applications/${name}.app")
        run(${BSDTAR} --format odc -cf ${flat}/${id}.pkg/Payload.cpio -C ${root} .)
        run(${GZIP} -9n ${flat}/${id}.pkg/Payload.cpio)
        file(RENAME ${flat}/${id}.pkg/Payload.cpio.gz ${flat}/${id}.pkg/Payload)
        file(WRITE ${flat}/${id}.pkg/PackageInfo
             "<pkg-info identifier=\"com.velmora.sample.${id}.pkg\" version=\"${new_version}\" install-location=\"/\"/>\n")
        file(WRITE ${flat}/Distribution "<?xml version=\"1.0\" encoding=\"utf-8\"?>
<installer-gui-script><title>${name}</title>
<pkg-ref id=\"com.velmora.sample.${id}.pkg\">#${id}.pkg</pkg-ref></installer-gui-script>
")
        run(${BSDTAR} --format xar -cf ${target} -C ${flat} .)
    endif()
endforeach()

# An app whose link leads to a web page instead of a file.
file(WRITE ${OUT}/files/velmora-journal.html "<!DOCTYPE html>
<html><head><meta charset=\"utf-8\"><title>Velmora Journal</title></head>
<body><h1>Velmora Journal</h1><p>Version 2.0 is available from the developer's site after signing in.</p></body></html>
")
file(REMOVE_RECURSE ${work})
