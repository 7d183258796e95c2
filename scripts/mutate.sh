#!/usr/bin/env bash
# Mutation check: how many deliberate single-line faults does the test suite
# notice?
#
#   scripts/mutate.sh [BUILD_DIR] [FIRST [LAST]]   (default: build-mutate/, all mutants)
#
# Reads the fixed list scripts/mutants.tsv (file, original text, mutated text).
# For each mutant it replaces the original text (which must occur exactly once)
# in its source file, rebuilds, runs every test and restores the file. A mutant
# is killed when a test fails, crashes or hangs (10 minutes per test program);
# it survives when everything passes. A mutant that does not compile is
# reported as such and counts as neither. Prints one line per mutant and the
# share killed; the log lands in BUILD_DIR/mutants.log.
#
# The test programs run directly (all cases of a program in one process,
# stopping at the first failure), then the tests that only ctest runs (the
# fuzz corpus replay and the install check). The source tree is left exactly as
# it was, also when the script is interrupted; while it runs, the tree holds
# one mutant at a time, so build nothing else from it meanwhile.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build-mutate}"
first="${2:-1}"
last="${3:-100000}"
list="$root/scripts/mutants.tsv"
log="$build/mutants.log"

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DBUILD_TESTING=ON -DTARNIC_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" >/dev/null
programs=$(find "$build/tests" -maxdepth 1 -type f -executable -name 'test_*' | sort)
[ -n "$programs" ] || { echo "mutate.sh: no test programs found in $build" >&2; exit 2; }

# Replaces one exact text in a file; fails unless it occurs exactly once.
substitute() {
    python3 - "$@" <<'PY'
import sys
path, old, new = sys.argv[1:4]
text = open(path, encoding="utf-8").read()
if text.count(old) != 1:
    sys.exit(f"{path}: the original text occurs {text.count(old)} times: {old}")
open(path, "w", encoding="utf-8").write(text.replace(old, new))
PY
}

suite_passes() {
    export QT_QPA_PLATFORM=offscreen LD_LIBRARY_PATH="$build/bin"
    # Two programs at a time; any failure stops the rest.
    printf '%s\n' $programs | xargs -P "$(nproc)" -I{} \
        timeout 600 {} --gtest_brief=1 --gtest_fail_fast >/dev/null 2>&1 || return 1
    (cd "$build" && ctest -R 'fuzz_|Install' --stop-on-failure >/dev/null 2>&1) || return 1
}

echo "baseline: every test must pass before mutating"
suite_passes || { echo "mutate.sh: the unmutated suite fails" >&2; exit 2; }

saved=""
restore() { if [ -n "$saved" ]; then cp "$saved" "$current"; rm -f "$saved"; saved=""; fi; }
trap restore EXIT INT TERM

: >"$log"
index=0 killed=0 survived=0 stillborn=0
while IFS=$'\t' read -r file old new <&3; do
    case "$file" in ''|'#'*) continue ;; esac
    index=$((index + 1))
    if [ "$index" -lt "$first" ] || [ "$index" -gt "$last" ]; then continue; fi
    current="$root/$file"
    saved="$(mktemp)"
    cp "$current" "$saved"
    substitute "$current" "$old" "$new"
    if ! cmake --build "$build" -j"$(nproc)" >/dev/null 2>&1; then
        verdict="does-not-compile"; stillborn=$((stillborn + 1))
    elif suite_passes; then
        verdict="SURVIVED"; survived=$((survived + 1))
    else
        verdict="killed"; killed=$((killed + 1))
    fi
    restore
    printf '%3d %-16s %s: %s\n' "$index" "$verdict" "$file" "$new" | tee -a "$log"
done 3<"$list"
cmake --build "$build" -j"$(nproc)" >/dev/null 2>&1 || true

tried=$((killed + survived))
summary="killed $killed of $tried mutants ($((tried ? 100 * killed / tried : 0)) %)"
[ "$stillborn" -eq 0 ] || summary="$summary; $stillborn did not compile"
echo "$summary" | tee -a "$log"
