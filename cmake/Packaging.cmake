# The Debian package: `cpack -G DEB` in the build folder makes quendrix_<version>-1_<arch>.deb
# holding everything the install rules install: the application and the simulator, the library
# with its headers and CMake package, the desktop entry and the icons, all under /usr.
set(QUENDRIX_PACKAGE_MAINTAINER "Quendrix maintainers <maintainers@quendrix.example>"
    CACHE STRING "The Debian package's maintainer")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quendrix)
set(CPACK_PACKAGE_VENDOR Quendrix)
set(CPACK_PACKAGE_CONTACT ${QUENDRIX_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Motorised macro and micro photography rig control with focus stacking")
set(CPACK_PACKAGE_DESCRIPTION
    "Quendrix drives the motor axes of a macro or micro photography rig (distance rail, bellows\n"
    "or lens changer) over a serial port or WiFi, takes the pictures of a focus stack with a\n"
    "camera on USB or any capture command, and fuses them into one picture that is sharp\n"
    "throughout. The package holds the application quendrix, the board simulator quendrix-sim,\n"
    "and the panel component's library with its headers and CMake package for other hosts.")
string(JOIN "" CPACK_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries the programs link (Qt, libgphoto2, ...) are found by dpkg-shlibdeps; the
# programs the application runs and the Qt plug-ins it loads (the window system, TIFF) are not.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "enfuse, hugin-tools, qt6-qpa-plugins, qt6-image-formats-plugins")
# The package's own library gets a shlibs entry and the ldconfig trigger.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

include(CPack)
