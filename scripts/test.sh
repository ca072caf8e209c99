#!/usr/bin/env bash
# Builds libKep11 and runs every test (GoogleTest suites through CTest).
# Usage: scripts/test.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh test
build="${1:-build}"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEP_BUILD_TESTS=ON
cmake --build "$build" -j2
ctest --test-dir "$build" -j2 --output-on-failure
