# Manual pages, and completions for bash and zsh: of the program from its --help, of the functions from the headers.

set(pages ${PROJECT_BINARY_DIR}/manual)
install(FILES docs/man/vspsc.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)
if(VSPSC_PYTHON)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS include/*.h)
    add_custom_command(
        OUTPUT ${pages}/functions.stamp
        COMMAND ${VSPSC_PYTHON} -B ${PROJECT_SOURCE_DIR}/tools/pages_of_functions.py ${PROJECT_SOURCE_DIR}/include ${pages}/man3
        COMMAND ${CMAKE_COMMAND} -E touch ${pages}/functions.stamp
        DEPENDS tools/pages_of_functions.py python/generate.py ${headers}
        VERBATIM)
    add_custom_target(pages ALL DEPENDS ${pages}/functions.stamp)
    install(DIRECTORY ${pages}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} OPTIONAL)
    if(TARGET vsps AND NOT VSPSC_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
        add_custom_command(
            OUTPUT ${pages}/vsps.stamp
            COMMAND ${VSPSC_PYTHON} -B ${PROJECT_SOURCE_DIR}/tools/pages_of_vsps.py $<TARGET_FILE:vsps> ${pages}
            COMMAND ${CMAKE_COMMAND} -E touch ${pages}/vsps.stamp
            DEPENDS tools/pages_of_vsps.py vsps
            VERBATIM)
        add_custom_target(pages_of_vsps ALL DEPENDS ${pages}/vsps.stamp)
        install(DIRECTORY ${pages}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} OPTIONAL)
        install(FILES ${pages}/bash/vsps DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions OPTIONAL)
        install(FILES ${pages}/zsh/_vsps DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions OPTIONAL)
    endif()
endif()
