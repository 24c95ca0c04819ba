# SPDX-License-Identifier: MIT
# Run by cmake --install: writes each of manual_pages as HTML into manual_folder.
set(folder "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${manual_folder}")
foreach(page IN LISTS manual_pages)
    get_filename_component(name ${page} NAME)
    message(STATUS "Installing: ${folder}/${name}.html")
    file(MAKE_DIRECTORY ${folder})
    execute_process(COMMAND mandoc -T html -O man=%N.%S.html ${page}
        OUTPUT_FILE ${folder}/${name}.html COMMAND_ERROR_IS_FATAL ANY)
endforeach()
