# What `cmake --install` puts in place: the libraries, their headers, pkg-config files and a CMake package. These find the
# libraries relative to themselves, so that an installed tree can be moved.

include(CMakePackageConfigHelpers)

install(TARGETS vspscy8 vspsvoice EXPORT vspsc LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(VSPSC_STATIC)
    install(TARGETS vspscy8_static vspsvoice_static EXPORT vspsc ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(FILES include/vspsc.h include/vspsvoice.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/vspsc include/vspsvoice DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/echo-cancelled.svg docs/echo-suppressed.svg docs/subband-windows.png
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)

# Links to what is not installed become plain text in the installed pages.
foreach(page README.md CHANGELOG.md SECURITY.md docs/architecture.md docs/echo.md docs/g168.md docs/noise.md docs/reliability.md docs/subband-windows.md)
    file(READ ${page} text)
    string(REGEX REPLACE "\\[([^]]*)\\]\\((\\.\\./)?(CONTRIBUTING|bench|cmake|debian|docs/(guides|site|families)|fuzz|include|python|src|tests|tools|voice)[^)]*\\)" "\\1" text "${text}")
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/pages/${page} "${text}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
endforeach()
install(DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/pages/ DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(vspsc_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vspsc)
install(EXPORT vspsc NAMESPACE vspsc:: FILE vspsc-config.cmake DESTINATION ${vspsc_package_dir})
write_basic_package_version_file(vspsc-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vspsc-config-version.cmake DESTINATION ${vspsc_package_dir})

# An absolute directory that the user has chosen stays as it is; others follow the prefix.
file(RELATIVE_PATH vspsc_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
cmake_path(APPEND vspsc_pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND vspsc_pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
foreach(pc vspsc vspsvoice)
    configure_file(cmake/${pc}.pc.in ${pc}.pc @ONLY)
endforeach()
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vspsc.pc ${CMAKE_CURRENT_BINARY_DIR}/vspsvoice.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
