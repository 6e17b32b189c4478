# SPDX-License-Identifier: MIT
# project_warnings: what every target of ours is compiled with. g++ 12, clang 14 and mingw g++ 12
# all take the first list; the second is g++'s own.
add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
    -Wnon-virtual-dtor -Werror
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wlogical-op>)
