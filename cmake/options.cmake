# SPDX-License-Identifier: MIT
# project_options: language, arithmetic and sanitizers, the same for every target. Results must be
# identical in all builds, so compilers must not fuse a multiplication and an addition.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_compile_options(project_options INTERFACE -ffp-contract=off)

# With link-time optimisation, g++ stops inlining once the whole program has grown by its budget. Which
# small functions in the hot loops are not inlined then depends on unrelated code, and can cost a tenth
# of the time and more: let g++ inline everything that it considers worthwhile.
set(inline_all $<$<CXX_COMPILER_ID:GNU>:--param=inline-unit-growth=300>)
target_compile_options(project_options INTERFACE ${inline_all})
target_link_options(project_options INTERFACE ${inline_all})

option(KORVALITE_DEBUG_LOG "Write the log to standard error" OFF)
if(KORVALITE_DEBUG_LOG)
    target_compile_definitions(project_options INTERFACE KORVALITE_DEBUG_LOG)
endif()

set(KORVALITE_SANITIZE "" CACHE STRING "Value for -fsanitize=, empty for none")
option(KORVALITE_FUZZ "Build the libFuzzer targets (clang only)" OFF)

set(sanitizers "${KORVALITE_SANITIZE}")
if(KORVALITE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "KORVALITE_FUZZ needs clang, but the compiler is "
            "${CMAKE_CXX_COMPILER_ID}. Use: cmake --preset fuzz")
    endif()
    set(sanitizers "address,undefined")
    target_compile_options(project_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(sanitizers)
    target_compile_options(project_options INTERFACE
        -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(project_options INTERFACE -fsanitize=${sanitizers})
    # g++ warns about uninitialized memory in the instrumented standard library, falsely.
    target_compile_options(project_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(sanitizers OR CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_definitions(project_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
target_link_libraries(project_options INTERFACE Threads::Threads)
