#!/usr/bin/env bash
# build_with_pkgconfig.sh PREFIX LIBDIR WORK: builds the example by hand, the way of someone without CMake, and runs it.
set -euo pipefail

prefix=$1 libdir=$1/$2 work=$3
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")

mkdir -p "$work"
export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags < <(pkg-config --cflags --libs kestrune)
set -x
case "${flags[*]}" in
    *"$prefix"*) ;;
    *) exit 1 ;;
esac
g++ -std=c++17 "$here/project/main.cpp" "${flags[@]}" -o "$work/example"
LD_LIBRARY_PATH=$libdir python3 "$here/run_example.py" "$work/example"

# The platform library has a file of its own.
read -ra flags < <(pkg-config --cflags --libs kestrune-platform)
g++ -std=c++17 -shared "$here/project/platform.cpp" -Wl,--no-undefined "${flags[@]}" -o "$work/libplatform_alone.so"
