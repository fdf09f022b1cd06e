#!/usr/bin/env bash
# Configures and builds into build/ (or $QUENDRIX_BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${QUENDRIX_BUILD_DIR:-build}
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build_dir"
