#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, when any is missing, and any
# further packages named on the command line (the sanitizer build names its compiler).
# Safe to run again: it does nothing when everything is there.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-serialport-dev qt6-qpa-plugins libgl-dev
    fonts-dejavu-core
    qt6-image-formats-plugins qt6-translations-l10n libgphoto2-dev enfuse hugin-tools
    librsvg2-bin dpkg-dev desktop-file-utils
    qt6-tools-dev qt6-l10n-tools doxygen
    "$@"
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "setup: need root (or sudo) to install packages" >&2; exit 1; }
    sudo="sudo"
fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
