#!/usr/bin/env bash
# Usage: check_install.sh BUILD_DIR HOST_SOURCE_DIR CMAKE CXX
# Installs BUILD_DIR into a temporary prefix, then builds and runs the host in
# HOST_SOURCE_DIR once through find_package(Kep11) and once through pkg-config.
set -euo pipefail
build=$1 host=$2 cmake=$3 cxx=$4
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
prefix=$tmp/prefix

"$cmake" --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name 'libKep11.so.1' | head -n 1)")
export LD_LIBRARY_PATH=$libdir

echo "== find_package(Kep11)"
"$cmake" -S "$host" -B "$tmp/cmake" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"$cmake" --build "$tmp/cmake" >/dev/null
"$tmp/cmake/kep_host"

echo "== pkg-config kep11"
export PKG_CONFIG_PATH=$libdir/pkgconfig
flags=$(pkg-config --cflags --libs kep11)
echo "$flags"
"$cxx" -Wall -Wextra -Werror "$host/kep_host.cpp" $flags -o "$tmp/kep_host_pc"
"$tmp/kep_host_pc"
