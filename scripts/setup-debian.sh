#!/usr/bin/env bash
# Installs the Debian packages that building and testing libKep11 needs.
# Usage: scripts/setup-debian.sh [core|test|bench|all]   (default: test)
# Installs only what is missing; needs root (or sudo) when something is missing.
set -euo pipefail

core=(build-essential cmake ninja-build pkg-config libexpat1-dev)
test=(libgtest-dev libgmock-dev clang libclang-rt-14-dev unicode-data
      fontconfig-config dbus shared-mime-info procps valgrind)
bench=(libbenchmark-dev libicu-dev libglib2.0-dev libpugixml-dev libxml2-dev libpoco-dev)

case "${1:-test}" in
  core) wanted=("${core[@]}") ;;
  test) wanted=("${core[@]}" "${test[@]}") ;;
  bench) wanted=("${core[@]}" "${bench[@]}") ;;
  all) wanted=("${core[@]}" "${test[@]}" "${bench[@]}") ;;
  *) echo "usage: $0 [core|test|bench|all]" >&2; exit 2 ;;
esac

missing=()
for p in "${wanted[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
if [ "$(id -u)" -eq 0 ]; then sudo=""; elif command -v sudo >/dev/null; then sudo="sudo"; else
  echo "missing packages and no root: ${missing[*]}" >&2; exit 1
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
