# SPDX-License-Identifier: MIT
# What "cmake --install" copies: the tool, the library with its header, and what find_package and
# pkg-config need to find it. The component "tools" is for people, "development" for programs.
include(CMakePackageConfigHelpers)

install(TARGETS korvalite RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
install(TARGETS korvalite_core EXPORT korvalite
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/include/korvalite"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Korvalite")
install(EXPORT korvalite NAMESPACE korvalite:: FILE KorvaliteTargets.cmake
    DESTINATION "${package_dir}" COMPONENT development)
configure_package_config_file(cmake/KorvaliteConfig.cmake.in
    "${CMAKE_BINARY_DIR}/KorvaliteConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/KorvaliteConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_BINARY_DIR}/KorvaliteConfig.cmake"
    "${CMAKE_BINARY_DIR}/KorvaliteConfigVersion.cmake"
    DESTINATION "${package_dir}" COMPONENT development)

# The path from the folder of korvalite.pc, so that it holds wherever the files are installed.
file(RELATIVE_PATH pkgconfig_to_prefix
    "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/korvalite.pc.in "${CMAKE_BINARY_DIR}/korvalite.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/korvalite.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

set(docs "${CMAKE_INSTALL_DATAROOTDIR}/doc")
install(FILES LICENSE RENAME copyright DESTINATION "${docs}/korvalite" COMPONENT tools)
install(FILES docs/korva.md docs/job-file.md docs/host-integration.md docs/file-formats.md
    DESTINATION "${docs}/korvalite" COMPONENT tools)
install(FILES LICENSE RENAME copyright DESTINATION "${docs}/libkorvalite-dev" COMPONENT development)
install(FILES docs/library.md DESTINATION "${docs}/libkorvalite-dev" COMPONENT development)
