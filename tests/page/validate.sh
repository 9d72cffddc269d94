#!/bin/sh
# Validates the glTF files that the tool writes: validate.sh TOOL. Where something is missing it
# says what, and exits with 77, which means skipped.
cd "$(dirname "$0")" || exit 1
missing=
command -v node >/dev/null || missing="node is not installed"
[ -d node_modules/gltf-validator ] || missing=${missing:-gltf-validator is not installed}
if [ -n "$missing" ]; then
    echo "page.gltf is skipped: $missing; ./dev page-test installs it" >&2
    exit 77
fi
TESSARIN_TOOL=$1 exec node --test --test-reporter=spec gltf_test.mjs
