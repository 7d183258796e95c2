#!/usr/bin/env bash
# Installs the build into a scratch prefix as a user would (cmake --install),
# then checks what a Linux desktop needs: the program and its library side by
# side, the examples one click away, a menu entry whose command exists and
# whose working directory lists Tarnic.dll, a link in bin/, nothing that points
# back into the build tree, and a program that starts from the menu's folder.
#   check_install.sh BUILD_DIR
set -euo pipefail
build="$1"
prefix="$(mktemp -d)"
trap 'rm -rf "$prefix"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null

desktop="$prefix/share/applications/tarnic-workbench.desktop"
[[ -f "$desktop" ]] || fail "no menu entry"
grep -qx 'Type=Application' "$desktop" || fail "menu entry is not an application"
exec_line="$(sed -n 's/^Exec=//p' "$desktop")"
path_line="$(sed -n 's/^Path=//p' "$desktop")"
[[ "$exec_line" == "$prefix/lib/tarnic-workbench/tarnic-workbench" ]] || fail "Exec=$exec_line"
[[ "$path_line" == "$prefix/lib/tarnic-workbench" ]] || fail "Path=$path_line"
[[ -x "$exec_line" ]] || fail "the menu's command is not an executable"
if command -v desktop-file-validate >/dev/null; then desktop-file-validate "$desktop"; fi

# The library test of the main window: Tarnic.dll in the list of the folder
# the menu starts the program in, exporting every routine of the binding.
[[ -f "$path_line/Tarnic.dll" ]] || fail "Tarnic.dll is not beside the program"
routines="$(nm -D --defined-only "$path_line/Tarnic.dll" | awk '{print $3}' | grep -c '_dll$')"
[[ "$routines" -eq 20 ]] || fail "Tarnic.dll exports $routines routines, not 20"

# The examples are one click away from the program's folder, and there in full.
[[ -f "$path_line/examples/two_sines_trend.dat" ]] || fail "examples not reachable from the program's folder"
[[ -f "$prefix/share/tarnic-workbench/examples/README.md" ]] || fail "examples README missing"
[[ "$(ls "$prefix/share/tarnic-workbench/examples" | grep -c '\.dat$')" -ge 10 ]] || fail "examples incomplete"

# The shell link resolves to the program, whose folder holds the library.
[[ -L "$prefix/bin/tarnic-workbench" ]] || fail "no link in bin/"
[[ "$(readlink -f "$prefix/bin/tarnic-workbench")" == "$(readlink -f "$exec_line")" ]] || fail "bin/ link goes elsewhere"
[[ -f "$prefix/share/icons/hicolor/scalable/apps/tarnic-workbench.svg" ]] || fail "no icon"
# The batch tool runs from its link in bin/, without a display.
[[ "$(env -u QT_QPA_PLATFORM -u DISPLAY "$prefix/bin/tarnic" --version)" == tarnic\ * ]] || fail "bin/tarnic does not run"
[[ -f "$prefix/share/doc/tarnic-workbench/USER_GUIDE.md" ]] || fail "no user guide"
[[ -f "$prefix/share/doc/tarnic-workbench/LICENSE" ]] || fail "no licence text"
grep -qx 'X-License=GPL-3.0-or-later' "$desktop" || fail "the menu entry names no licence"
grep -q '<project_license>GPL-3.0-or-later</project_license>' \
    "$prefix/share/metainfo/tarnic-workbench.metainfo.xml" || fail "no package description with its licence"

# Nothing installed points back into the build tree.
for f in "$exec_line" "$path_line/Tarnic.dll"; do
    if readelf -d "$f" | grep -E 'RPATH|RUNPATH' | grep -qF "$(readlink -f "$build")"; then
        fail "$f keeps a path into the build tree"
    fi
    if ldd "$f" | grep -q 'not found'; then fail "$f misses a library: $(ldd "$f" | grep 'not found')"; fi
done

# Started as the menu starts it, the program comes up and stays up.
status=0
(cd "$path_line" && QT_QPA_PLATFORM=offscreen timeout 3 "$exec_line") || status=$?
[[ "$status" -eq 124 ]] || fail "the installed program ended with status $status instead of running"
echo "install layout and menu entry are right under $prefix"
