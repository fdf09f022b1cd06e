#!/usr/bin/env bash
# The sanitizer build: builds with AddressSanitizer and UndefinedBehaviorSanitizer into
# build-sanitize/ (or $QUENDRIX_SANITIZE_BUILD_DIR) and runs every test there. With Clang the
# fuzz targets are libFuzzer programs: their tests replay the seed inputs and then search for
# new faults for QUENDRIX_FUZZ_SECONDS (10 unless set) each.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang libclang-rt-14-dev
build_dir=${QUENDRIX_SANITIZE_BUILD_DIR:-build-sanitize}
CC=clang CXX=clang++ cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQUENDRIX_SANITIZE=ON -DQUENDRIX_BUILD_BENCH=OFF \
    -DQUENDRIX_FUZZ_SECONDS="${QUENDRIX_FUZZ_SECONDS:-10}" >/dev/null
cmake --build "$build_dir"
# The installed-package test builds a host without the sanitizers, which cannot link against
# the instrumented library; the normal build runs it.
QT_QPA_PLATFORM=offscreen ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)" \
    --label-exclude install
