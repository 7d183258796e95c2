#!/usr/bin/env bash
# Line and branch coverage of the numeric library, the core and the window
# folders by the whole test suite.
#
#   scripts/coverage.sh [BUILD_DIR]      (default: build-coverage/)
#
# Configures an instrumented build (gcc --coverage, -Og) in its own folder,
# builds it, runs every test headless, and prints one row per source folder:
# lines and branches covered, with percentages. Branches are counted as gcovr
# counts them without the exception paths the compiler adds to every call
# (--exclude-throw-branches) and without unreachable ones, so the figure is
# about the code's own decisions. The full per-file report lands in
# BUILD_DIR/coverage.txt, the summary in BUILD_DIR/coverage-summary.txt.
#
# Needs gcovr (Debian: apt-get install gcovr, or scripts/install-deps.sh --coverage).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build-coverage}"
command -v gcovr >/dev/null || { echo "coverage.sh: gcovr is missing (apt-get install gcovr)" >&2; exit 2; }

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS="--coverage -Og" \
    -DCMAKE_EXE_LINKER_FLAGS=--coverage -DCMAKE_SHARED_LINKER_FLAGS=--coverage \
    -DCMAKE_MODULE_LINKER_FLAGS=--coverage \
    -DBUILD_TESTING=ON -DTARNIC_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
find "$build" -name '*.gcda' -delete
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j"$(nproc)" --no-tests=error --output-on-failure >"$build/ctest.log") ||
    { tail -30 "$build/ctest.log"; echo "coverage.sh: tests failed" >&2; exit 1; }

folders="numeric core preprocess spectra signal wavelet maps multiscale help app"
filters=()
for f in $folders; do filters+=(--filter "$root/$f/"); done
gcovr -r "$root" --object-directory "$build" "${filters[@]}" \
    --exclude-throw-branches --exclude-unreachable-branches --gcov-ignore-parse-errors \
    --txt "$build/coverage.txt" --json-summary "$build/coverage.json" >/dev/null

python3 - "$build/coverage.json" $folders <<'PY' | tee "$build/coverage-summary.txt"
import json, sys
report = json.load(open(sys.argv[1]))
rows = {f: [0, 0, 0, 0] for f in sys.argv[2:]}
for entry in report["files"]:
    top = entry["filename"].split("/")[0]
    if top in rows:
        r = rows[top]
        r[0] += entry["line_covered"]; r[1] += entry["line_total"]
        r[2] += entry["branch_covered"]; r[3] += entry["branch_total"]
def pct(a, b): return 100.0 * a / b if b else 0.0
print(f"{'folder':<12}{'lines':>16}{'%':>8}{'branches':>18}{'%':>8}")
total = [0, 0, 0, 0]
for name, r in rows.items():
    total = [t + v for t, v in zip(total, r)]
    print(f"{name:<12}{r[0]:>7}/{r[1]:<8}{pct(r[0], r[1]):>8.1f}{r[2]:>9}/{r[3]:<8}{pct(r[2], r[3]):>8.1f}")
print(f"{'all':<12}{total[0]:>7}/{total[1]:<8}{pct(total[0], total[1]):>8.1f}"
      f"{total[2]:>9}/{total[3]:<8}{pct(total[2], total[3]):>8.1f}")
PY
