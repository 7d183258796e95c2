#!/usr/bin/env bash
# Configures and builds into build/ (the program, Tarnic.dll and the examples
# land together in build/bin).
#
#   build.sh            the workbench alone, as a packager builds it: no test
#                       tools needed, nothing built that it does not start
#   build.sh --tests    first that plain build with GoogleTest and Google
#                       Benchmark hidden from CMake (so a plain build is proved
#                       not to need them), then everything: tests, benchmarks,
#                       tools
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build"
configure() { cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null; }

if [ "${1:-}" != "--tests" ]; then
    bash "$root/scripts/install-deps.sh"
    configure -DBUILD_TESTING=OFF -DTARNIC_BENCHMARKS=OFF
    cmake --build "$build" -j"$(nproc)" --target tarnic-workbench
    exit 0
fi

bash "$root/scripts/install-deps.sh" --tests
configure -DBUILD_TESTING=OFF -DTARNIC_BENCHMARKS=OFF \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON
cmake --build "$build" -j"$(nproc)"
configure -DBUILD_TESTING=ON -DTARNIC_BENCHMARKS=ON \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=OFF -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=OFF
cmake --build "$build" -j"$(nproc)"
