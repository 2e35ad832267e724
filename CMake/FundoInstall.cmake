# install(): the library, its headers below include/fundo-3, the CMake package and fundo.pc.
include(CMakePackageConfigHelpers)

set(FUNDO_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Fundo")

install(TARGETS Fundo EXPORT FundoTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY Include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/fundo-3" FILES_MATCHING PATTERN "*.h")
install(EXPORT FundoTargets NAMESPACE Fundo:: DESTINATION "${FUNDO_PACKAGE_DIR}")

configure_package_config_file(CMake/FundoConfig.cmake.in "${PROJECT_BINARY_DIR}/FundoConfig.cmake"
    INSTALL_DESTINATION "${FUNDO_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/FundoConfigVersion.cmake"
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/FundoConfig.cmake" "${PROJECT_BINARY_DIR}/FundoConfigVersion.cmake"
    DESTINATION "${FUNDO_PACKAGE_DIR}")

# fundo.pc finds its prefix from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH FUNDO_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(CMake/fundo.pc.in "${PROJECT_BINARY_DIR}/fundo.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/fundo.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
