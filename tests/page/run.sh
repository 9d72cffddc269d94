#!/bin/sh
# Runs the test of the page, or says what it lacks: run.sh TOOL. The code 77 means skipped.
cd "$(dirname "$0")" || exit 1
skip() {
    echo "skipped: $1; ./dev page-test installs it"
    exit 77
}
command -v chromium >/dev/null || skip "chromium is not installed"
command -v node >/dev/null || skip "node is not installed"
[ -d node_modules/playwright-core ] || skip "playwright-core is not installed"
TESSARIN_TOOL=$1 exec node --test --test-reporter=spec page_test.mjs
