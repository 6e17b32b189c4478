# SPDX-License-Identifier: MIT
# What "cmake --install" copies: the tool, the library with its header, and what find_package and
# pkg-config need to find it.
include(CMakePackageConfigHelpers)

install(TARGETS korvalite RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS korvalite_core EXPORT korvalite ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${CMAKE_SOURCE_DIR}/include/korvalite" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Korvalite")
install(EXPORT korvalite NAMESPACE korvalite:: FILE KorvaliteTargets.cmake
    DESTINATION "${package_dir}")
configure_package_config_file(cmake/KorvaliteConfig.cmake.in
    "${CMAKE_BINARY_DIR}/KorvaliteConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/KorvaliteConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_BINARY_DIR}/KorvaliteConfig.cmake"
    "${CMAKE_BINARY_DIR}/KorvaliteConfigVersion.cmake"
    DESTINATION "${package_dir}")

configure_file(cmake/korvalite.pc.in "${CMAKE_BINARY_DIR}/korvalite.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/korvalite.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
