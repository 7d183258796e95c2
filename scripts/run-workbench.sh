#!/usr/bin/env bash
# Builds the workbench and starts it in build/bin, where its file browser shows
# the program, Tarnic.dll and the bundled examples/.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bash "$root/scripts/build.sh"
cd "$root/build/bin"
exec ./tarnic-workbench "$@"
