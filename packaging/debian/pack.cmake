# Packs what CPack has packed once more, since it puts the time of the moment into the package and takes the files in
# the order of the disk. dpkg-deb sorts them, and with SOURCE_DATE_EPOCH the same source makes the same package.

set(folder "${CPACK_TEMPORARY_DIRECTORY}/again")
foreach(package ${CPACK_PACKAGE_FILES})
    file(REMOVE_RECURSE "${folder}")
    execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
    set(sums "${folder}/DEBIAN/md5sums")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C sort --output "${sums}" "${sums}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND chmod 755 "${folder}" "${folder}/DEBIAN" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build "${folder}" "${package}"
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND chmod 644 "${package}" COMMAND_ERROR_IS_FATAL ANY)  # apt reads it as another user
endforeach()
