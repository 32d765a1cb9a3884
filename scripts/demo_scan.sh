#!/usr/bin/env bash
# Makes a partial-Fourier ISMRMRD raw-data file and reconstructs it with the
# command line: the library's 8-coil Shepp-Logan phantom (128 x 128, two
# repetitions) cut to ky = -64 .. 23 by the test-file writer, which also
# writes the readouts twice oversampled and 64 noise-only readouts first; then
# homodyne-recon on it with a PNG montage.
#
#   scripts/demo_scan.sh BUILD_DIR OUT_DIR
# writes OUT_DIR/shepp_logan_pf.h5 (raw data), OUT_DIR/shepp_logan_pf_images.h5
# and OUT_DIR/shepp_logan_pf.png.
set -euo pipefail

build=${1:?usage: demo_scan.sh BUILD_DIR OUT_DIR}
out=${2:?usage: demo_scan.sh BUILD_DIR OUT_DIR}
mkdir -p "$out"
ismrmrd_generate_cartesian_shepp_logan -m 128 -c 8 -r 2 -O 1 -o "$out/shepp_logan.h5" > /dev/null
"$build/tests/tools/make_scan_file" "$out/shepp_logan_pf.h5" --from "$out/shepp_logan.h5" --keep-y -64 23 \
    --oversampling 2 --noise 64
rm -f "$out/shepp_logan.h5"
set -x
"$build/homodyne-recon" --png "$out/shepp_logan_pf.png" "$out/shepp_logan_pf.h5" "$out/shepp_logan_pf_images.h5"
