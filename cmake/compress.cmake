# Run by CPack over what goes into the packages: manual pages and changelogs are compressed there.
file(GLOB files
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/man1/*.1
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/doc/*/changelog)
foreach(file IN LISTS files)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
