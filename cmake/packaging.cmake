# SPDX-License-Identifier: MIT
# What cpack makes: a Debian package of the Linux build, a ZIP archive of the Windows build.
set(CPACK_PACKAGE_NAME velkoran)
set(CPACK_PACKAGE_VENDOR "The Velkoran developers")
set(CPACK_PACKAGE_CONTACT "The Velkoran developers <velkoran@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "shieldings, couplings and spectra for NMR, in batch")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${CMAKE_SOURCE_DIR}/packaging/description.txt)
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME velkoran-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    # the same modes whatever the umask of the one who makes the package
    set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
        OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_RELEASE 0velkoran1)  # not a package of Debian
    set(CPACK_DEBIAN_PACKAGE_SECTION science)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
    set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/finish_debian_tree.cmake)
endif()
include(CPack)
