#!/usr/bin/env bash
# Builds libKep11 and runs its main job: the sample host program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh core
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEP_BUILD_TESTS=OFF
cmake --build build -j2 --target kep_sample_host
./build/examples/kep_sample_host "$@"
