# Run by cpack over the staged files of all packages.
file(GLOB_RECURSE documents ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*/*.[18]
     ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog.Debian)
execute_process(COMMAND gzip -9n ${documents} COMMAND_ERROR_IS_FATAL ANY)
