#!/usr/bin/env bash
# Builds everything and runs every test headless. Exits non-zero on any failure.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bash "$root/scripts/build.sh" --tests
export QT_QPA_PLATFORM=offscreen
cd "$root/build"
ctest --output-on-failure -j"$(nproc)" --no-tests=error
