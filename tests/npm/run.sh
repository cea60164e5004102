#!/usr/bin/env bash
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Packs the npm package and tests it where it is installed from the tarball alone, without a network:
#
#   tests/npm/run.sh BUILD [bench [ROWS...]]
#
# BUILD is the folder that `make wasm` builds in. The tools of the tests are fetched once, into BUILD/tools.
# With "bench" the benchmark is run instead.
set -euo pipefail
source=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
installed=$build/installed

"$source/scripts/install-deps.sh" wasm
command -v npm >/dev/null || "$source/scripts/install-deps.sh" npm
version=$(node -p "require('$build/package/package.json').version")

rm -rf "$installed"
mkdir -p "$installed"
cd "$installed"
npm pack --silent "$build/package" >/dev/null
echo '{"private": true, "type": "module"}' >package.json
npm install --silent --offline --no-audit --no-fund "./qxrecordset-$version.tgz"
cp "$source"/tests/npm/*.mjs "$source/tests/npm/types.ts" "$source/packaging/npm/benchmark.mjs" .

if [[ ${2-} == bench ]]; then
  exec node --expose-gc benchmark.mjs "${@:3}"
fi
"$source/tests/npm/tools.sh" "$build" typescript@~5.9
node "$build/tools/node_modules/typescript/bin/tsc" --noEmit --strict --noUncheckedIndexedAccess \
  --target es2022 --module nodenext --lib es2022,dom types.ts
SOURCE=$source VERSION=$version node --expose-gc --test
