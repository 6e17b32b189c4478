# SPDX-License-Identifier: MIT
# The kernels of src/lanes: each width is compiled with its own instruction set.
set(lane_sources "${CMAKE_SOURCE_DIR}/src/lanes/sse2.cpp" "${CMAKE_SOURCE_DIR}/src/lanes/avx2.cpp")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    # Optimised across files, a kernel could be inlined where its instructions are not allowed.
    set(lane_options -fno-lto)
    if(KORVALITE_SANITIZE STREQUAL "thread")
        # A kernel may read a position while another thread writes it, and sees each coordinate old or
        # new, as a relaxed load would. The language has no relaxed load of a vector.
        list(APPEND lane_options -fno-sanitize=thread)
    endif()
    set_source_files_properties(${lane_sources} PROPERTIES
        SKIP_UNITY_BUILD_INCLUSION ON COMPILE_OPTIONS "${lane_options}")
    set(avx2_options ${lane_options} -mavx2 -mno-fma)
    if(MINGW)
        # The Windows convention aligns the stack to 16 bytes, and GCC does not align it further.
        list(APPEND avx2_options -Wa,-muse-unaligned-vector-move)
    endif()
    set_source_files_properties("${CMAKE_SOURCE_DIR}/src/lanes/avx2.cpp" PROPERTIES
        COMPILE_OPTIONS "${avx2_options}")
    set_source_files_properties("${CMAKE_SOURCE_DIR}/src/lanes/kernels.cpp" PROPERTIES
        SKIP_UNITY_BUILD_INCLUSION ON COMPILE_DEFINITIONS KORVALITE_HAS_LANES)
    set_source_files_properties(${lane_sources} PROPERTIES
        COMPILE_DEFINITIONS KORVALITE_HAS_LANES)
else()
    list(REMOVE_ITEM core_sources ${lane_sources})
endif()
