# A zip by `cpack`: the component, the program, and what registers the one and tells of both.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME vorlent-mozilla)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_FILE_NAME "vorlent-mozilla-${PROJECT_VERSION}-windows-${VORLENT_PROCESSOR}")
set(CPACK_STRIP_FILES ON)

install(TARGETS vorlent-mozilla vorlent_server RUNTIME DESTINATION . COMPONENT windows)
install(FILES packaging/windows/README.txt packaging/windows/register.cmd DESTINATION . COMPONENT windows)
set(CPACK_COMPONENTS_ALL windows)

include(CPack)
