# The Debian package. One holds all: library, headers and tools are used together.
set(OVISK_PACKAGE_MAINTAINER "ZbOvisk maintainers <maintainers@zbovisk.example>"
    CACHE STRING "Who answers for the Debian package")

set(CPACK_DEBIAN_PACKAGE_NAME zbovisk)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${OVISK_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Reads a motorised stage over a serial line and drives it: position, switches,
lamps, absolute moves, homing. This is the native build, for hosts under
development; machines in service use the Windows library.

With the headers, CMake and pkg-config files, an example host, a simulated
controller and a log viewer.")

# What no other package carries.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/add_files.cmake)
