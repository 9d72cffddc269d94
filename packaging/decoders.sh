#!/usr/bin/env bash
# Builds what the tool reads recordings with, and libpng, as static libraries, from the sources of this
# Debian. Debian has most of them as shared libraries only, and none for Windows.
#
# usage: decoders.sh linux|windows PREFIX
set -euo pipefail
target=$1
mkdir -p "$2"
prefix=$(cd "$2" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# What Debian has as a static library as well, such as libogg-dev. That of opus does not go into a
# shared library.
there=(libogg libvorbis flac libpng1.6)
packages=(opus mpg123 lame libsoxr libsndfile)
papers=(libogg-dev libvorbis-dev libflac-dev libpng-dev)
[ "$target" = linux ] || papers=()
[ "$target" = linux ] || packages=("${there[@]}" "${packages[@]}")
stamp="$target ${packages[*]} $(sha256sum "${BASH_SOURCE[0]}")"
[ "$(cat "$prefix/stamp" 2>/dev/null)" = "$stamp" ] && exit 0

case $target in
    linux)
        host=()
        compiler=gcc
        toolchain=()
        ;;
    windows)
        host=(--host=x86_64-w64-mingw32)
        compiler=x86_64-w64-mingw32-gcc-posix
        toolchain=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/windows-mingw.cmake")
        ;;
    *)
        echo "usage: decoders.sh linux|windows PREFIX" >&2
        exit 1
        ;;
esac

mirror() {
    apt-get indextargets --format '$(SITE)' | awk '!/security/ { site = $1 } END { print site }'
}

# Sources come from the mirror that packages come from, without a change to the system's own lists.
fetch() {
    local apt=(-qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$PWD/parts"
        -o Dir::State::Lists="$PWD/lists" -o Dir::Cache="$PWD/cache" -o APT::Sandbox::User=root)
    mkdir -p parts lists/partial cache
    . /etc/os-release
    printf 'Types: deb-src\nURIs: %s\nSuites: %s\nComponents: main\nSigned-By: %s\n' \
        "$(mirror)" "$VERSION_CODENAME" \
        /usr/share/keyrings/debian-archive-keyring.gpg >parts/debian.sources
    apt-get "${apt[@]}" update
    # A signature that the mirror lacks is of no matter: apt checks the sums of what is used.
    apt-get "${apt[@]}" source --download-only "${packages[@]}" ||
        echo "not all files of the sources were there" >&2
}

unpack() { # package
    local patch
    [ -e "$1" ] && return
    mkdir "$1"
    tar -xf "$1"_*.orig.tar.* --strip-components=1 -C "$1" --exclude='*.asc'
    tar -xf "$1"_*.debian.tar.* -C "$1"
    [ -e "$1/debian/patches/series" ] || return 0
    sed 's/#.*//' "$1/debian/patches/series" | while read -r patch _; do
        [ -z "$patch" ] || patch -d "$1" -p1 -sN <"$1/debian/patches/$patch"
    done
    # Generated files are as new as what the patches changed.
    find "$1" -name aclocal.m4 -exec touch {} +
    find "$1" -name configure -exec touch {} + -o -name 'config.h*.in' -exec touch {} +
    find "$1" -name Makefile.in -exec touch {} +
}

by_cmake() { # folder, options...
    local folder=$1
    shift
    [ -e "$folder/done" ] && return
    cmake -S "$folder" -B "$folder/built" -G Ninja "${toolchain[@]}" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
        -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "$@" >"$folder.log" 2>&1 &&
        cmake --build "$folder/built" >>"$folder.log" 2>&1 &&
        cmake --install "$folder/built" >>"$folder.log" 2>&1 ||
        { tail -n 30 "$folder.log" >&2; return 1; }
    touch "$folder/done"
}

by_configure() { # folder, options...
    local folder=$1
    shift
    [ -e "$folder/done" ] && return
    (cd "$folder" &&
        ./configure "${host[@]}" --prefix="$prefix" --libdir="$prefix/lib" --disable-shared \
            --enable-static --with-pic CC="ccache $compiler" CFLAGS=-O2 "$@" &&
        make -j "$(nproc)" && make install) >"$folder.log" 2>&1 ||
        { tail -n 30 "$folder.log" >&2; return 1; }
    touch "$folder/done"
}

work=$root/build/decoders/$target
mkdir -p "$work"
cd "$work"
[ -e fetched ] || { fetch && touch fetched; }
echo "building the readers of recordings for $target: the first time takes some minutes" >&2
for package in "${packages[@]}"; do
    unpack "$package"
done
if [ "$target" != linux ]; then
    by_cmake libogg -DINSTALL_DOCS=OFF
    by_cmake libvorbis
    by_cmake flac -DBUILD_CXXLIBS=OFF -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOCS=OFF \
        -DINSTALL_MANPAGES=OFF -DWITH_STACK_PROTECTOR=OFF -DWITH_FORTIFY_SOURCE=OFF
    by_cmake libpng1.6 -DPNG_SHARED=OFF -DPNG_TESTS=OFF
fi
by_configure opus --disable-doc --disable-extra-programs
by_cmake mpg123/ports/cmake -DBUILD_LIBOUT123=OFF -DBUILD_PROGRAMS=OFF
by_configure lame --disable-frontend --disable-decoder --disable-gtktest
by_cmake libsoxr -DBUILD_TESTS=OFF -DBUILD_EXAMPLES=OFF -DWITH_OPENMP=OFF -DWITH_LSR_BINDINGS=OFF
by_cmake libsndfile -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DENABLE_EXTERNAL_LIBS=ON \
    -DENABLE_MPEG=ON -DENABLE_CPACK=OFF -DINSTALL_MANPAGES=OFF

if [ "$target" = linux ]; then
    # Debian's headers are those of the same versions, and the same for each build of the project.
    sed -i -e 's|^includedir=.*|includedir=/usr/include|' -e "s|-I$prefix/include||" "$prefix"/lib/pkgconfig/*.pc
    rm -rf "$prefix/include"
fi

for package in "${packages[@]}" "${papers[@]}"; do
    printf '%s\n\n' "== $package"
    cat "$package/debian/copyright" 2>/dev/null || cat "/usr/share/doc/$package/copyright"
    echo
done >"$prefix/LICENSES-of-readers.txt"
echo "$stamp" >"$prefix/stamp"
