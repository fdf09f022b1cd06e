#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh
build_dir=${QUENDRIX_BUILD_DIR:-build}
QT_QPA_PLATFORM=offscreen ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
