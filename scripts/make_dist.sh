#!/usr/bin/env bash
# Writes the Octave package homodyne-<version>.tar.gz into the folder given
# (default out/): DESCRIPTION (whose Version line is the one place the version
# lives), INDEX (made here from the M-files, so that new functions are listed
# without editing it), COPYING, NEWS, inst/ with the M-files and src/ with the
# C++ sources and a Makefile that builds every MEX module at pkg install.
set -euo pipefail
cd "$(dirname "$0")/.."
out_dir=${1:-out}

version=$(sed -n 's/^Version: *//p' package/DESCRIPTION)
name=homodyne-$version
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
root=$stage/$name

mkdir -p "$root/inst" "$root/src"
cp package/DESCRIPTION package/NEWS COPYING "$root/"
cp matlab/*.m "$root/inst/"
cp -r matlab/private "$root/inst/"
(cd src && find . -name '*.cpp' -o -name '*.hpp' -o -name '*.h') | while read -r file; do
    mkdir -p "$root/src/$(dirname "$file")"
    cp "src/$file" "$root/src/$file"
done
cp package/Makefile "$root/src/Makefile"

{
    echo "homodyne >> Homodyne partial-Fourier reconstruction"
    echo "Homodyne toolbox"
    for file in "$root"/inst/*.m; do
        function_name=$(basename "$file" .m)
        [ "$function_name" = Contents ] || echo " $function_name"
    done
} > "$root/INDEX"

mkdir -p "$out_dir"
tar -czf "$out_dir/$name.tar.gz" -C "$stage" "$name"
echo "$out_dir/$name.tar.gz"
