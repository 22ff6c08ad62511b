# Target `docs`: the site in docs/html of the build tree. It stops at doxygen's first warning, and at a link that leads nowhere.

find_program(VSPSC_DOXYGEN doxygen)
find_program(VSPSC_DOT dot)
find_path(VSPSC_DOXYGEN_AWESOME doxygen-awesome.css PATH_SUFFIXES share/doxygen-awesome-css)
if(VSPSC_DOXYGEN AND VSPSC_DOT AND VSPSC_DOXYGEN_AWESOME AND VSPSC_PYTHON)
    configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
    set(site ${PROJECT_BINARY_DIR}/docs)
    add_custom_target(
        docs
        COMMAND ${CMAKE_COMMAND} -E rm -rf ${site}/html
        COMMAND ${VSPSC_PYTHON} -B ${PROJECT_SOURCE_DIR}/docs/site/prepare.py ${PROJECT_SOURCE_DIR} ${site}/input
        COMMAND ${VSPSC_DOXYGEN} ${site}/Doxyfile
        COMMAND ${VSPSC_PYTHON} -B ${PROJECT_SOURCE_DIR}/docs/site/link_pictures.py ${site}/places.tag ${site}/html
        COMMAND ${VSPSC_PYTHON} -B ${PROJECT_SOURCE_DIR}/docs/site/check_links.py ${site}/html
        USES_TERMINAL VERBATIM)
else()
    message(STATUS "No target docs; it needs doxygen, doxygen-awesome-css and graphviz")
endif()
