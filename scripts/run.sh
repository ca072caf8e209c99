#!/usr/bin/env bash
# Builds libKep11 and runs its main job, the kep tool: without arguments it
# prints the library version and reads the sample document apps/kep/sample.xml,
# writing it back as compact XML; with arguments it runs `kep <arguments>`.
# The sample host is built too (build/examples/kep_sample_host).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh core
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEP_BUILD_TESTS=OFF
cmake --build build -j2 --target kep kep_sample_host
if [ "$#" -eq 0 ]; then
  ./build/apps/kep/kep version
  ./build/apps/kep/kep xml apps/kep/sample.xml
else
  ./build/apps/kep/kep "$@"
fi
