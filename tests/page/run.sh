#!/bin/sh
# Runs the test of the page: run.sh TOOL. Where something is missing it says what, and exits with
# 77, which means skipped; under CI=true, with 1. `run.sh --why` only says what is missing.
cd "$(dirname "$0")" || exit 1
missing=
CHROMIUM=$(command -v "${CHROMIUM:-chromium}") || missing="chromium is not installed"
command -v node >/dev/null || missing="node is not installed"
[ -d node_modules/playwright-core ] || missing=${missing:-playwright-core is not installed}
if [ -n "$missing" ]; then
    echo "page.browser is skipped: $missing; ./dev page-test installs it" >&2
    if [ "$1" = --why ]; then
        exit 0
    elif [ "${CI:-}" = true ]; then
        echo "under CI=true that is a failure" >&2
        exit 1
    fi
    exit 77
fi
[ "$1" = --why ] && exit 0
export CHROMIUM
TESSARIN_TOOL=$1 exec node --test --test-reporter=spec page_test.mjs
