#!/usr/bin/env bash
# Installs a build into a folder of its own, moves that folder, and uses what is in it: the tool, the
# library by pkg-config, shared and static, and every example by its CMake package.
#
# usage: check_install.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
source_folder=$1
build_folder=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build_folder" --prefix "$scratch/first" >"$scratch/install.log"
mv "$scratch/first" "$scratch/prefix"
prefix=$scratch/prefix
cd "$scratch"

echo "the tool"
demo=$source_folder/data/demo/echo-test
"$prefix/bin/tessarin" align "$demo.wav" --text-file "$demo.txt" --format tsv -q >timings.tsv
test "$(wc -l <timings.tsv)" -gt 100
test -s "$prefix/share/man/man1/tessarin.1"

echo "pkg-config"
cat >host.cpp <<'CODE'
#include <cstdio>
#include <cstring>
#include <tessarin/tessarin.h>

int main() {
    std::puts(GetVisemixErrorMessage(0));
    tessarin::ITextBasedPhnRecognizer* recognizer = nullptr;
    const int32_t code = CreateTextBasedRecognizer(&recognizer);
    DestroyTextBasedRecognizer(recognizer);
    return code;
}
CODE
pc=$(find "$prefix" -name tessarin.pc)
libraries=$(dirname "$(dirname "$pc")")
export PKG_CONFIG_PATH=$(dirname "$pc")
flags=(--define-variable=prefix="$prefix" tessarin)
${CXX:-c++} -std=c++17 host.cpp $(pkg-config --cflags --libs "${flags[@]}") -o host_shared
LD_LIBRARY_PATH=$libraries ./host_shared
${CXX:-c++} -std=c++17 host.cpp $(pkg-config --cflags "${flags[@]}") "$libraries/libtessarin.a" \
    -lz -lpthread -o host_static
./host_static

echo "the Python package"
PYTHONPATH=$(dirname "$(find "$prefix" -path '*/tessarin/__init__.py' -printf '%h\n')") \
    PYTHONDONTWRITEBYTECODE=1 ${PYTHON:-python3} - "$demo" <<'CODE'
import pathlib, sys
import tessarin

demo = pathlib.Path(sys.argv[1])
result = tessarin.align(demo.with_suffix(".wav"), demo.with_suffix(".txt").read_text())
assert len(result.words) > 20 and result.track().frames
CODE

echo "examples"
cmake -S "$source_folder/examples" -B examples -DCMAKE_PREFIX_PATH="$prefix" >cmake.log ||
    { cat cmake.log; exit 1; }
cmake --build examples -j "$(nproc)" >build.log 2>&1 || { cat build.log; exit 1; }
ctest --test-dir examples --output-on-failure
