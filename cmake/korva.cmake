# SPDX-License-Identifier: MIT
# korva, the command for people. Everything but main is in a library, so that tests can link it.
option(KORVALITE_KORVA "Build the command korva (needs CLI11, nlohmann-json and stb)" ON)
if(NOT KORVALITE_KORVA)
    return()
endif()
find_package(CLI11 QUIET)
find_package(nlohmann_json QUIET)
# Headers alone, so those of this machine serve a cross build too.
find_path(KORVALITE_STB stb/stb_image_write.h NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(KORVALITE_STB)
if(NOT CLI11_FOUND OR NOT nlohmann_json_FOUND OR NOT KORVALITE_STB)
    message(STATUS "korva is left out: it needs CLI11, nlohmann-json and stb "
        "(Debian: libcli11-dev, nlohmann-json3-dev, libstb-dev)")
    return()
endif()
# Copied, because a cross build must not see the other headers of the folder.
set(korva_headers "${CMAKE_BINARY_DIR}/korva_headers")
file(COPY "${KORVALITE_STB}/stb/stb_image_write.h" "${KORVALITE_STB}/stb/stb_image.h"
    DESTINATION "${korva_headers}/stb")

file(GLOB_RECURSE korva_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/apps/korva/*.cpp")
list(REMOVE_ITEM korva_sources "${CMAKE_SOURCE_DIR}/apps/korva/main.cpp")
add_library(korva_app STATIC ${korva_sources})
# Reading and writing are bound by memory and the disk, and tests link without optimisation across
# files.
set_target_properties(korva_app PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
target_include_directories(korva_app PUBLIC "${CMAKE_SOURCE_DIR}/apps")
target_include_directories(korva_app SYSTEM PUBLIC "${korva_headers}")
target_link_libraries(korva_app
    PUBLIC korvalite_core CLI11::CLI11 nlohmann_json::nlohmann_json
    PRIVATE project_warnings)
# GCC 12 warns without cause where std::string puts a literal before a string (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(korva_app PRIVATE -Wno-restrict)
endif()
# Commands only parse options and call others, but the parser's templates take long to optimise.
file(GLOB korva_commands "${CMAKE_SOURCE_DIR}/apps/korva/commands/*.cpp")
list(APPEND korva_commands "${CMAKE_SOURCE_DIR}/apps/korva/command_line.cpp")
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    set_source_files_properties(${korva_commands} PROPERTIES COMPILE_OPTIONS -O1)
endif()
# Each command has its own Arguments.
set_source_files_properties(${korva_commands} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)

add_executable(korva apps/korva/main.cpp)
target_link_libraries(korva PRIVATE korva_app project_warnings)
install(TARGETS korva RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)

# Its manual pages and completions, which it writes itself.
if(CMAKE_CROSSCOMPILING OR sanitizers)
    return()
endif()
set(korva_manual "${CMAKE_BINARY_DIR}/manual")
set(korva_completion "${CMAKE_BINARY_DIR}/completion")
file(MAKE_DIRECTORY "${korva_completion}")
set(korva_texts "${korva_manual}/korva.1")
foreach(shell IN ITEMS bash zsh fish)
    list(APPEND korva_texts "${korva_completion}/korva.${shell}")
    list(APPEND write_completions
        COMMAND korva completion ${shell} > "${korva_completion}/korva.${shell}")
endforeach()
add_custom_command(OUTPUT ${korva_texts}
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${korva_manual}"  # pages of commands that are gone
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${korva_manual}"
    COMMAND korva manual --into "${korva_manual}"
    ${write_completions}
    DEPENDS korva
    COMMENT "Writing the manual pages and completions of korva"
    VERBATIM)
add_custom_target(korva_texts ALL DEPENDS ${korva_texts})
install(DIRECTORY "${korva_manual}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
install(FILES "${korva_completion}/korva.bash" RENAME korva
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
install(FILES "${korva_completion}/korva.zsh" RENAME _korva
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" COMPONENT tools)
install(FILES "${korva_completion}/korva.fish"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT tools)
