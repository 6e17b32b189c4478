# SPDX-License-Identifier: MIT
# project_warnings: the warnings for all our targets. g++ 12, clang 14 and mingw g++ 12 accept the
# first list; the second is only for g++.
add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
    -Wnon-virtual-dtor -Werror
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wlogical-op>)
