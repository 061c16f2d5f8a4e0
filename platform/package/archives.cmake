# Run by CPack when all files are in place. Whoever makes the archives, and when and where, they are the same byte for byte:
# sorted, of the day of the release, and of nobody. CPack's own archives have the order and the times of the disk.

# Zip archives hold local times.
set(ENV{TZ} UTC)
set(ENV{LC_ALL} C)

cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH staged)
set(top ${CPACK_PACKAGE_FILE_NAME})
set(archive ${CPACK_PACKAGE_DIRECTORY}/${top})

file(GLOB_RECURSE files RELATIVE ${CPACK_TEMPORARY_DIRECTORY} ${CPACK_TEMPORARY_DIRECTORY}/*)
set(sums "")
set(paths ${top}/SHA256SUMS)
foreach(file IN LISTS files)
    file(SHA256 ${CPACK_TEMPORARY_DIRECTORY}/${file} sum)
    string(APPEND sums "${sum}  ${file}\n")
    list(APPEND paths ${top}/${file})
endforeach()
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/SHA256SUMS "${sums}")
file(CHMOD ${CPACK_TEMPORARY_DIRECTORY}/SHA256SUMS PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
list(SORT paths)
list(JOIN paths "\n" lines)
file(WRITE ${archive}.list "${lines}\n")

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${staged} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
file(REMOVE ${archive}.zip ${archive}.tar.gz)
run(touch --no-create --date ${CPACK_RELEASE_DATE} ${paths})
run(tar --create --file ${archive}.tar --format ustar --owner 0 --group 0 --numeric-owner --files-from ${archive}.list)
run(gzip --no-name ${archive}.tar)
run(zip -q -X ${archive}.zip -@ INPUT_FILE ${archive}.list)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${archive}.tar.gz ${archive}.zip)
