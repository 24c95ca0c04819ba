# SPDX-License-Identifier: MIT
# Run by cpack on the tree of the Debian package: adds what Debian asks for to what cmake --install has put there.
cmake_minimum_required(VERSION 3.25)  # for the way a search deals with links to folders
set(share ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})

# The text of the licence goes into the copyright file, with its blank lines as full stops.
file(READ ${documents}/LICENSE license)
file(REMOVE ${documents}/LICENSE)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)\n\n(.*)\n$" matched "${license}")
set(copyright "${CMAKE_MATCH_1}")
string(REPLACE "\n" "\n " license_text " ${CMAKE_MATCH_2}")
string(REPLACE "\n \n" "\n .\n" license_text "${license_text}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/../packaging/debian_copyright.in ${documents}/copyright
    @ONLY NO_SOURCE_PERMISSIONS)

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH where that is set
configure_file(${CMAKE_CURRENT_LIST_DIR}/../packaging/debian_changelog.in ${documents}/changelog.Debian
    @ONLY NO_SOURCE_PERMISSIONS)

file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)

file(GLOB manual_pages ${share}/man/man?/*)
execute_process(COMMAND gzip -9n ${manual_pages} ${documents}/changelog ${documents}/changelog.Debian
    COMMAND_ERROR_IS_FATAL ANY)

# The links follow the new names.
file(GLOB_RECURSE pages ${documents}/*.md)
foreach(page IN LISTS pages)
    file(READ ${page} text)
    string(REGEX REPLACE "(\\]\\([./]*)LICENSE\\)" "\\1copyright)" text "${text}")
    string(REGEX REPLACE "(\\]\\([./]*)CHANGELOG[.]md\\)" "\\1changelog.gz)" text "${text}")
    string(REGEX REPLACE "(\\]\\([./]*/man/man[15]/[^)]*)\\)" "\\1.gz)" text "${text}")
    file(WRITE ${page} "${text}")
endforeach()
