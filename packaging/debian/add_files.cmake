# Run by CPack before each package is put together: gives the Debian one what Debian expects, where it
# expects it.
if(NOT CPACK_GENERATOR STREQUAL DEB)
    return()
endif()

set(documents ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/doc/zbovisk)
set(overrides ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/lintian/overrides)
file(RENAME ${documents}/LICENSE ${documents}/copyright)
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/changelog ${documents}/changelog)
execute_process(COMMAND gzip -9n ${documents}/changelog COMMAND_ERROR_IS_FATAL ANY)
file(MAKE_DIRECTORY ${overrides})
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides ${overrides}/zbovisk)
