#!/usr/bin/env bash
# Installs the package tarball given into a temporary prefix with package
# lists of its own (the user's packages are never read or changed), loads it
# and runs tests/package/smoke_homodyne_package.m. Fails on any fault.
set -euo pipefail
cd "$(dirname "$0")/.."
tarball=$(realpath "$1")
smoke_dir=$(realpath tests/package)
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

octave-cli --no-gui --quiet --norc --eval "
  pkg prefix '$prefix/share' '$prefix/arch';
  pkg local_list '$prefix/local_packages';
  pkg global_list '$prefix/global_packages';
  pkg install -local '$tarball';
  pkg load homodyne;
  addpath('$smoke_dir');
  smoke_homodyne_package();"
