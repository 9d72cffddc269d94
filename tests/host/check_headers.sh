#!/usr/bin/env bash
# Compiles each public header alone, as C++17 and C++20 (the flat one also as C11), with every
# compiler that is there, and allows no warning.
#
# usage: check_headers.sh INCLUDE_FOLDER
set -euo pipefail
include=$1

check() { # compiler, language, standard, header
    echo "#include <tessarin/$(basename "$4")>" |
        "$1" -x "$2" -std="$3" -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror \
            -I "$include" - || { echo "$1 -std=$3 $4"; return 1; }
}
export -f check
export include

command -v g++ clang++ >/dev/null # at least one
{
    for compiler in g++ clang++; do
        command -v "$compiler" >/dev/null || continue
        for header in "$include"/tessarin/*.h; do
            printf '%s\n' "$compiler c++ c++17 $header" "$compiler c++ c++20 $header"
        done
    done
    for compiler in gcc clang; do
        command -v "$compiler" >/dev/null && [ -e "$include/tessarin/tessarin_c.h" ] || continue
        echo "$compiler c c11 $include/tessarin/tessarin_c.h"
    done
} | xargs -P "$(nproc)" -L 1 bash -c 'check "$@"' check
