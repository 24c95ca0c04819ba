# SPDX-License-Identifier: MIT
# Run by cmake --install on its pages of Markdown, document_pages in document_folder: a link to a manual page leads to
# where that was put, in manual_folder, and one to a file of the project that isn't installed becomes plain text.
foreach(folder document_folder manual_folder)
    cmake_path(ABSOLUTE_PATH ${folder} BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
    set(${folder} "$ENV{DESTDIR}${${folder}}")
endforeach()
string(ASCII 1 link_start)  # a bracket would end up in a list, where it keeps elements together

foreach(page IN LISTS document_pages)
    file(READ "${document_folder}/${page}" text)
    cmake_path(SET page_folder NORMALIZE "${document_folder}/${page}/..")
    string(REPLACE "](" "${link_start}" marked "${text}")
    # not those with a colon, which lead to the web, nor those that begin with a # and stay on the page
    string(REGEX MATCHALL "${link_start}[^)#:]+[)#]" targets "${marked}")
    list(TRANSFORM targets REPLACE "${link_start}|[)#]" "")
    list(REMOVE_DUPLICATES targets)
    foreach(target IN LISTS targets)
        if(EXISTS "${page_folder}/${target}")
            continue()
        endif()
        string(REGEX REPLACE "^.*man/(.*[.]([15]))$" "${manual_folder}/man\\2/\\1" place "${target}")
        if(IS_ABSOLUTE "${place}" AND EXISTS "${place}")
            cmake_path(RELATIVE_PATH place BASE_DIRECTORY "${page_folder}")
            string(REPLACE "](${target})" "](${place})" text "${text}")
        else()
            string(REGEX REPLACE "([][.+*?()^$|\\])" "\\\\\\1" pattern "${target}")
            string(REGEX REPLACE "\\[([^][]*)\\]\\(${pattern}(#[^)]*)?\\)" "\\1" text "${text}")
        endif()
    endforeach()
    file(WRITE "${document_folder}/${page}" "${text}")
endforeach()
