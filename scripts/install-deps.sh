#!/usr/bin/env bash
# Installs the Debian packages the workbench needs to build and test, if any is
# missing. Needs root for apt-get; otherwise it names what to install.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev libgl-dev
    libfftw3-dev libeigen3-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    fonts-dejavu-core fonts-dejavu-extra
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
    echo "These packages are missing: ${missing[*]}" >&2
    echo "Install them as root: apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
