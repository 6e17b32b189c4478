# SPDX-License-Identifier: MIT
# korvalite_bench: every bench/*.cpp and some sources shared with the tests, if Google Benchmark is
# installed.
set(bench_default OFF)
if(NOT CMAKE_CROSSCOMPILING)
    find_package(benchmark QUIET)
    if(benchmark_FOUND)
        set(bench_default ON)
    endif()
endif()
option(KORVALITE_BENCH "Build the benchmarks (needs Google Benchmark)" ${bench_default})

file(GLOB bench_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/*.cpp")
set(bench_support
    "${CMAKE_SOURCE_DIR}/tests/support/hard_meshes.cpp"
    "${CMAKE_SOURCE_DIR}/tests/support/surface_distance.cpp"
    "${CMAKE_SOURCE_DIR}/tests/support/triangle_grid.cpp")
if(KORVALITE_BENCH AND bench_sources)
    find_package(benchmark REQUIRED)
    add_executable(korvalite_bench ${bench_sources} ${bench_support})
    target_include_directories(korvalite_bench PRIVATE
        "${CMAKE_SOURCE_DIR}/bench" "${CMAKE_SOURCE_DIR}/tests")
    target_link_libraries(korvalite_bench PRIVATE
        korvalite_core project_warnings benchmark::benchmark)
    target_compile_definitions(korvalite_bench PRIVATE
        "KORVALITE_TOOL_PATH=\"$<TARGET_FILE:korvalite>\""
        "KORVALITE_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\"")
    add_dependencies(korvalite_bench korvalite)
endif()
