#!/usr/bin/env bash
# Installs the Debian packages the workbench needs to build, if any is missing;
# with --tests also those the tests and benchmarks need. Needs root for
# apt-get; otherwise it names what to install.
#   install-deps.sh [--tests]
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev qt6-svg-dev libgl-dev
    libfftw3-dev libeigen3-dev
    fonts-dejavu-core fonts-dejavu-extra
)
if [ "${1:-}" = "--tests" ]; then
    packages+=(libgtest-dev libgmock-dev libbenchmark-dev)
fi

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
