#!/usr/bin/env bash
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Tests the page of examples/browser in headless Chromium, with the npm package that was built in BUILD:
# run.sh BUILD. SHOTS names a folder for pictures of it.
set -euo pipefail
source=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
"$source/scripts/install-deps.sh" wasm browser
"$source/tests/npm/tools.sh" "$build" playwright-core@1
cp "$source/tests/browser/page.test.mjs" "$build/tools/"
cd "$build/tools"
SOURCE=$source PACKAGE=$build/package node --test page.test.mjs
