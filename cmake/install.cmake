include(CMakePackageConfigHelpers)

set(TESSARIN_DATA_DIR ${CMAKE_INSTALL_DATADIR}/tessarin)
set(TESSARIN_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Tessarin)

install(TARGETS tessarin tessarin_static EXPORT tessarin-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Only this very compiler reads its intermediate code, which is most of the archive.
    install(CODE "
        file(GLOB archive \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libtessarin.a\")
        execute_process(COMMAND ${CMAKE_STRIP} --wildcard --strip-unneeded
            -R .gnu.lto_* -R .gnu.debuglto_* \${archive} COMMAND_ERROR_IS_FATAL ANY)")
endif()
install(DIRECTORY include/tessarin DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY data/ DESTINATION ${TESSARIN_DATA_DIR}
    PATTERN "demo" EXCLUDE PATTERN "sentences" EXCLUDE)

install(EXPORT tessarin-targets NAMESPACE tessarin::
    DESTINATION ${TESSARIN_CMAKE_DIR} FILE TessarinTargets.cmake)
configure_package_config_file(cmake/TessarinConfig.cmake.in
    ${PROJECT_BINARY_DIR}/TessarinConfig.cmake
    INSTALL_DESTINATION ${TESSARIN_CMAKE_DIR} PATH_VARS TESSARIN_DATA_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TessarinConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/TessarinConfig.cmake
    ${PROJECT_BINARY_DIR}/TessarinConfigVersion.cmake
    DESTINATION ${TESSARIN_CMAKE_DIR})
configure_file(cmake/tessarin.pc.in ${PROJECT_BINARY_DIR}/tessarin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessarin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET tessarin_tool)
    install(TARGETS tessarin_tool DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET tessarin_manual)
    install(FILES ${TESSARIN_MANUAL_DIR}/tessarin.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${TESSARIN_MANUAL_DIR}/tessarin.bash RENAME tessarin
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${TESSARIN_MANUAL_DIR}/tessarin.zsh RENAME _tessarin
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
    install(FILES ${TESSARIN_MANUAL_DIR}/tessarin.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
if(EXISTS ${PROJECT_SOURCE_DIR}/bindings/python/tessarin)
    set(TESSARIN_PYTHON_DIR lib/python3/dist-packages CACHE STRING
        "Where the Python package goes, below the prefix")
    install(DIRECTORY bindings/python/tessarin DESTINATION ${TESSARIN_PYTHON_DIR}
        PATTERN "__pycache__" EXCLUDE)
endif()
install(FILES README.md CHANGELOG.md LICENSE data/LICENSES.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES cmake/debian_copyright RENAME copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)

set(CPACK_GENERATOR TGZ)
if(CMAKE_SYSTEM_NAME STREQUAL Linux)
    list(APPEND CPACK_GENERATOR DEB)
endif()
set(CPACK_PACKAGE_CONTACT "The Tessarin developers <developers@tessarin.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION "\
Finds when every phoneme and word of a recording was spoken, with or without its text,\n\
and turns the timings into a track of mouth-shape weights. Library, headers, tool,\n\
Python package, and a model and lexicon of American English.")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# zlib1g-dev is for hosts of the static library.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3, python3-numpy, zlib1g-dev")
include(CPack)
