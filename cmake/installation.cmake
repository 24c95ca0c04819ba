# SPDX-License-Identifier: MIT
# What cmake --install puts where: the usual folders on Linux, one flat folder that suits an archive on Windows.
if(WIN32)
    set(program_folder .)
    set(parameter_folder parameters)
    set(document_folder .)
    set(manual_folder manual)
    set(readme packaging/windows_readme.md.in)
else()
    include(GNUInstallDirs)
    set(program_folder ${CMAKE_INSTALL_BINDIR})
    set(parameter_folder ${CMAKE_INSTALL_DATADIR}/velkoran/parameters)
    set(document_folder ${CMAKE_INSTALL_DOCDIR})
    set(manual_folder ${CMAKE_INSTALL_MANDIR})
    set(readme README.md)
endif()

# for the scripts that cmake --install runs
install(CODE "set(document_folder \"${document_folder}\")\nset(manual_folder \"${manual_folder}\")")

install(TARGETS velkoran RUNTIME DESTINATION ${program_folder})
# each folder of parameters with what a run or its reader needs, not with what makes it
file(GLOB parameter_files RELATIVE ${CMAKE_SOURCE_DIR}/parameters CONFIGURE_DEPENDS parameters/README.md
    parameters/*/*.txt parameters/*/*.abp parameters/*/atom_types.csv parameters/*/*.json parameters/*/README.md
    parameters/*/SHA256SUMS)
foreach(file IN LISTS parameter_files)
    cmake_path(GET file PARENT_PATH folder)
    install(FILES parameters/${file} DESTINATION ${parameter_folder}/${folder})
endforeach()
install(FILES ${readme} DESTINATION ${document_folder} RENAME README.md)
install(FILES LICENSE CHANGELOG.md CITATION.cff DESTINATION ${document_folder})
# docs/ and examples/ stay folders of their own, so that the links between the documents lead somewhere
file(GLOB_RECURSE document_files RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS docs/*.md docs/*.png docs/*.svg
    docs/nmrparam.in docs/nmrspect.in examples/README.md examples/nmrparam.in examples/nmrspect.in)
foreach(file IN LISTS document_files)
    cmake_path(GET file PARENT_PATH folder)
    install(FILES ${file} DESTINATION ${document_folder}/${folder})
endforeach()

if(WIN32)
    # Windows has no reader of manual pages: they become pages for a browser, with links to each other.
    file(GLOB manual_pages CONFIGURE_DEPENDS man/*.1 man/*.5)
    install(CODE "set(manual_pages \"${manual_pages}\")")
    install(SCRIPT cmake/render_manual.cmake)
else()
    foreach(section 1 5)
        file(GLOB manual_pages CONFIGURE_DEPENDS man/*.${section})
        install(FILES ${manual_pages} DESTINATION ${manual_folder}/man${section})
    endforeach()
    # the documents link to parameters/
    file(RELATIVE_PATH parameter_link ${CMAKE_INSTALL_FULL_DOCDIR}
        ${CMAKE_INSTALL_FULL_DATADIR}/velkoran/parameters)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/generated)
    file(CREATE_LINK ${parameter_link} ${CMAKE_BINARY_DIR}/generated/parameters SYMBOLIC)
    install(FILES ${CMAKE_BINARY_DIR}/generated/parameters DESTINATION ${document_folder})
endif()

# behind everything that a document can link to
set(document_pages README.md CHANGELOG.md ${document_files})
list(FILTER document_pages INCLUDE REGEX "[.]md$")
install(CODE "set(document_pages \"${document_pages}\")")
install(SCRIPT cmake/mend_links.cmake)
