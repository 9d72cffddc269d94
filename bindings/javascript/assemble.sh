#!/bin/sh
# Puts the package together from what was built: assemble.sh BUILD_FOLDER. BUILD_FOLDER/package is
# what `npm pack` packs, and BUILD_FOLDER/browser is the example page with the package beside it.
set -eu
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../.."
package=$build/package
page=$build/browser

rm -rf "$package/src" "$package/data" "$page"
mkdir -p "$package/data" "$page"
cp -R bindings/javascript/src bindings/javascript/package.json bindings/javascript/README.md LICENSE \
    "$package"
cp data/LICENSES.md "$package"
for name in en-us.model en-us.calibration en-us-hearing.model en-us.trigrams; do
    gzip -9nc "data/$name" >"$package/data/$name.gz"
done
cp data/en-us.lexicon "$package/data" # packed within

# The drawn face is that of `tessarin view`.
drawing=apps/tessarin/page
{
    printf 'const MOUTH = '
    cat $drawing/mouth_shapes.json
    printf ';\n'
    cat $drawing/mouth_shapes.js $drawing/mouth.js
} >"$page/mouth.js"
cp $drawing/mouth.svg "$page"
cp examples/browser/*.html examples/browser/*.css examples/browser/*.js "$page"
cp -R "$package" "$page/tessarin"

(cd "$build" && npm pack --silent ./package)
size() { # TITLE, FILES...
    title=$1
    shift
    total=0
    for file in "$@"; do
        total=$((total + $(gzip -9nc "$package/$file" | wc -c)))
    done
    printf '%8d kB gzipped  %s\n' $((total / 1000)) "$title"
}
scripts=$(cd "$package" && ls src/*.js)
# shellcheck disable=SC2086 # one word for each file
size "code with SIMD" dist/tessarin-simd.wasm $scripts
# shellcheck disable=SC2086
size "code without" dist/tessarin-plain.wasm $scripts
size "model and lexicon, for align" data/en-us.model.gz data/en-us.calibration.gz data/en-us.lexicon
size "model for live and recognize" data/en-us-hearing.model.gz data/en-us.trigrams.gz
