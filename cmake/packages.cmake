# SPDX-License-Identifier: MIT
# Debian packages: "cpack -G DEB" in a build folder makes korvalite from the component "tools" and
# libkorvalite-dev from "development".
if(CMAKE_CROSSCOMPILING OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvalite)
set(CPACK_PACKAGE_VENDOR "The Korvalite developers")
set(CPACK_PACKAGE_CONTACT "Korvalite developers <korvalite@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL tools development)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Folders that only their owner may change, whatever the umask is.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME korvalite)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "simplifies very large triangle meshes
Korvalite reduces the number of triangles of 3D scans, game assets and
printable parts, and keeps their shape, seams, colours and symmetry.
.
This package has the command korva, which reads and writes OBJ, PLY, STL,
OFF and glTF files among others, and the batch tool korvalite.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvalite-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "g++ | c++-compiler")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "simplifies very large triangle meshes - C++ library
Korvalite reduces the number of triangles of 3D scans, game assets and
printable parts, and keeps their shape, seams, colours and symmetry.
.
This package has the static library, its header, and what CMake and
pkg-config need to find them.")

include(CPack)
