#!/usr/bin/env bash
# Installs what is missing, builds, and starts the Quendrix host application.
# Without a screen it renders the window offscreen to a picture and says where.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh
build_dir=${QUENDRIX_BUILD_DIR:-build}
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
    echo "run: no screen found, running offscreen"
    QT_QPA_PLATFORM=offscreen exec "$build_dir/app/quendrix" --snapshot "$build_dir/quendrix-window.png" "$@"
fi
exec "$build_dir/app/quendrix" "$@"
