# SPDX-License-Identifier: MIT
# korvalite_tests (every tests/**/*_test.cpp), and programs that replay or run the fuzz targets.
find_package(GTest QUIET)
if(NOT GTest_FOUND)
    # The tool itself only needs a compiler, so it can still be built.
    message(WARNING "GoogleTest is not installed, so no tests are built (Debian: libgtest-dev)")
    return()
endif()
include(GoogleTest)

# What the tests and replays check is in the library and the executable, so they themselves are
# compiled for a short build. They link the library's plain code: optimised across files, each of
# them would compile the whole library once more.
function(build_quickly target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)  # helpers of tests share names
    if(KORVALITE_CORE_HAS_PLAIN_CODE)
        set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
        target_link_options(${target} PRIVATE -fno-lto)
    endif()
    if(sanitizers)
        # The checks that double the size of the code stay in the library.
        target_compile_options(${target} PRIVATE -O0 -fno-sanitize=vptr,null,alignment)
        # Of an inline function's copies the linker keeps the first: link options come before the
        # test's own objects, so that the library runs its optimised copies.
        target_link_options(${target} PRIVATE
            -Wl,--whole-archive $<TARGET_FILE:korvalite_core> -Wl,--no-whole-archive)
        add_dependencies(${target} korvalite_core)
    elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        target_compile_options(${target} PRIVATE -O1)
    endif()
endfunction()

# A sanitizer makes the start of a process slow: a process for each test would spend more time there
# than in the tests.
function(add_sharded_tests target count)
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        add_test(NAME ${target}_${index} COMMAND ${target} --gtest_brief=1)
        set_tests_properties(${target}_${index} PROPERTIES
            TIMEOUT 1800
            ENVIRONMENT "GTEST_TOTAL_SHARDS=${count};GTEST_SHARD_INDEX=${index}")
    endforeach()
endfunction()

file(GLOB_RECURSE test_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/*_test.cpp")
file(GLOB test_support CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/support/*.cpp")
if(TARGET korva)
    set(korva_library korva_app)
else()
    set(korva_library "")
    list(FILTER test_sources EXCLUDE REGEX "/tests/korva/")
endif()

# The thread sanitizer needs only the test files that mention threads.
if(KORVALITE_SANITIZE STREQUAL "thread")
    foreach(test_source IN LISTS test_sources)
        file(STRINGS "${test_source}" lines_about_threads REGEX "[Tt]hread|Shared|CriticalSection")
        if(NOT lines_about_threads)
            list(REMOVE_ITEM test_sources "${test_source}")
        endif()
    endforeach()
endif()

# The fuzz build is for the fuzz targets alone.
if(test_sources AND NOT KORVALITE_FUZZ)
    add_executable(korvalite_tests ${test_sources} ${test_support})
    target_include_directories(korvalite_tests PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    target_link_libraries(korvalite_tests PRIVATE
        korvalite_core ${korva_library} project_warnings GTest::gtest_main)
    # Only a test compares with CGAL; without it, that test is skipped.
    find_package(CGAL QUIET)
    if(CGAL_FOUND)
        target_link_libraries(korvalite_tests PRIVATE CGAL::CGAL)
        set_source_files_properties("${CMAKE_SOURCE_DIR}/tests/library/measure_against_cgal_test.cpp"
            PROPERTIES COMPILE_DEFINITIONS KORVALITE_HAS_CGAL)
    endif()
    build_quickly(korvalite_tests)
    target_precompile_headers(korvalite_tests PRIVATE <gtest/gtest.h>)
    target_compile_definitions(korvalite_tests PRIVATE
        "KORVALITE_TOOL_PATH=\"$<TARGET_FILE:korvalite>\""
        "KORVALITE_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\"")
    # Tests of whole jobs run the executables.
    add_dependencies(korvalite_tests korvalite)
    if(TARGET korva)
        target_compile_definitions(korvalite_tests PRIVATE "KORVA_PATH=\"$<TARGET_FILE:korva>\"")
        add_dependencies(korvalite_tests korva)
    endif()
    if(sanitizers)
        add_sharded_tests(korvalite_tests 24)
    else()
        gtest_discover_tests(korvalite_tests
            DISCOVERY_MODE PRE_TEST
            DISCOVERY_TIMEOUT 60
            PROPERTIES TIMEOUT 900)
    endif()
endif()

# tests/fuzz/fuzz_NAME.cpp: replay_NAME runs the target over tests/fuzz/corpus/NAME in every build;
# the fuzz build also makes fuzz_NAME, which looks for new inputs.
file(GLOB fuzz_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/fuzz/fuzz_*.cpp")
if(NOT TARGET korva)
    list(FILTER fuzz_sources EXCLUDE REGEX "/fuzz_korva_")
endif()
foreach(fuzz_source IN LISTS fuzz_sources)
    get_filename_component(fuzz_target "${fuzz_source}" NAME_WE)
    string(REGEX REPLACE "^fuzz_" "" fuzz_name "${fuzz_target}")
    set(corpus "${CMAKE_SOURCE_DIR}/tests/fuzz/corpus/${fuzz_name}")

    if(KORVALITE_FUZZ)
        add_executable(${fuzz_target} "${fuzz_source}")
        target_include_directories(${fuzz_target} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
        target_link_libraries(${fuzz_target} PRIVATE
            korvalite_core ${korva_library} project_warnings)
        target_link_options(${fuzz_target} PRIVATE -fsanitize=fuzzer)
        # libFuzzer writes its findings into the first folder, so that one is in the build tree.
        set(findings "${CMAKE_BINARY_DIR}/findings/${fuzz_name}")
        file(MAKE_DIRECTORY "${findings}")
        set(seed_folder "")
        if(IS_DIRECTORY "${corpus}")
            set(seed_folder "${corpus}")
        endif()
        add_test(NAME ${fuzz_target} COMMAND ${fuzz_target}
            -max_total_time=10 -timeout=20 -rss_limit_mb=2048
            "-artifact_prefix=${findings}/" "${findings}" ${seed_folder})
    else()
        add_executable(replay_${fuzz_name} "${fuzz_source}"
            "${CMAKE_SOURCE_DIR}/tests/fuzz/replay_main.cpp")
        target_include_directories(replay_${fuzz_name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
        target_link_libraries(replay_${fuzz_name} PRIVATE
            korvalite_core ${korva_library} project_warnings)
        build_quickly(replay_${fuzz_name})
        if(IS_DIRECTORY "${corpus}")
            add_test(NAME replay_${fuzz_name} COMMAND replay_${fuzz_name} "${corpus}")
        endif()
    endif()
endforeach()

# An include that points upward fails the tests, not only the review.
find_package(Python3 QUIET COMPONENTS Interpreter)
if(Python3_FOUND)
    add_test(NAME include_layers
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/scripts/check_layers")
    add_test(NAME compatibility_tables
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/scripts/check_compatibility")
    add_test(NAME documentation_links
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/scripts/check_readme" --links)
    # The tool's .kvm files, read by a script that follows the page that describes them.
    set(samples "${CMAKE_SOURCE_DIR}/samples")
    add_test(NAME read_kvm
        COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/tests/jobs/read_kvm.py"
            --tool "$<TARGET_FILE:korvalite>"
            "${samples}/synth-torus.Vok" "${samples}/synth-seams.Vok"
            "${samples}/spot-everything.Vok" "${samples}/spot-colored.Vok"
            "${samples}/synth-symmetric.Vok" Symmetry=x)
endif()
