#!/bin/sh
# Links libsndfile with all that it reads with into one shared library, for the wheel.
#
# usage: shared_reader.sh READERS OUTPUT
set -eu
export PKG_CONFIG_PATH="$1/lib/pkgconfig"
# Only the functions of libsndfile itself are seen, so that another copy in the process is of no matter.
printf '{ global: sf_*; local: *; };\n' >"$2.map"
others=$(pkg-config --static --libs-only-l --libs-only-L sndfile | tr ' ' '\n' | grep -v '^-l\(sndfile\|m\)$')
# shellcheck disable=SC2086 # one word for each library
gcc -shared -o "$2" -Wl,-soname,libsndfile.so.1 -Wl,-Bsymbolic -Wl,--version-script="$2.map" \
    -Wl,--whole-archive "$1/lib/libsndfile.a" -Wl,--no-whole-archive \
    -Wl,-Bstatic $others -Wl,-Bdynamic -lm -Wl,--strip-all
