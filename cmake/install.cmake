include(CMakePackageConfigHelpers)

install(TARGETS tessarin EXPORT tessarin-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/tessarin DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tessarin-targets NAMESPACE tessarin::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessarin FILE TessarinConfig.cmake)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TessarinConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TessarinConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessarin)
if(TARGET tessarin_tool)
    install(TARGETS tessarin_tool DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tessarin
    PATTERN "demo" EXCLUDE PATTERN "sentences" EXCLUDE)
