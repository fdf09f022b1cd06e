#!/usr/bin/env bash
# Installs what is missing, builds, and starts the Quendrix host application.
# Without a screen it takes and fuses a focus stack on the simulated rig, unattended.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh
build_dir=${QUENDRIX_BUILD_DIR:-build}
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
    echo "run: no screen found: a focus stack on the simulated rig, fused at the end"
    exec "$build_dir/app/quendrix" --stack 2000:6000:8 --combine "$@"
fi
exec "$build_dir/app/quendrix" "$@"
