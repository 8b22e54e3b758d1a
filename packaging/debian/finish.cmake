# What Debian wants of the files before they become a package; CPack runs it when they stand in its folder.
# SOURCE_DATE_EPOCH, where it is set, is the time of every file: the same source makes the same package.

set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}")
set(doc "${root}/usr/share/doc/websmide-ftp")

file(GLOB_RECURSE pages "${root}/usr/share/man/*.1")
execute_process(COMMAND gzip -9n ${pages} "${doc}/changelog" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find "${root}" -type d -exec chmod 755 "{}" +)  # whatever the mask was
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND find "${root}" -exec touch --no-dereference "--date=@$ENV{SOURCE_DATE_EPOCH}" "{}" +
        COMMAND_ERROR_IS_FATAL ANY)
endif()
