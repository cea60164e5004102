#!/usr/bin/env bash
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Installs packages that tests need from the npm registry, unless they are there: tools.sh BUILD PACKAGE...
set -euo pipefail
mkdir -p "$1/tools"
cd "$1/tools"
[[ -f package.json ]] || echo '{"private": true}' >package.json
for package in "${@:2}"; do
  [[ -d node_modules/${package%@*} ]] || npm install --silent --no-audit --no-fund "$package"
done
