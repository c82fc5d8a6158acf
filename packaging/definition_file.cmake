# The names of the DLL's exports, from which a linker other than mingw's makes an import library of its
# own. Without ordinals: hosts bind to the names.
set(definitions "LIBRARY ZbOvisk.dll\nEXPORTS\n")
foreach(header zb_ovisk.h zb_ovisk_plain.h)
    set_property(DIRECTORY APPEND PROPERTY
        CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/host/${header})
    file(STRINGS ${PROJECT_SOURCE_DIR}/src/host/${header} lines REGEX "^ZBOVISK_API ")
    list(APPEND declarations ${lines})
endforeach()
list(TRANSFORM declarations REPLACE "^ZBOVISK_API [a-z]+ ([A-Za-z_]+).*" "    \\1\n")
list(REMOVE_DUPLICATES declarations)
list(SORT declarations)
string(APPEND definitions ${declarations})
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/ZbOvisk.def ${definitions})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZbOvisk.def DESTINATION ${CMAKE_INSTALL_LIBDIR})
