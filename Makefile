# Front door of the homodyne MEX toolbox. Every target installs the Debian
# packages it needs when run as root, and names them otherwise.

BUILD_DIR ?= build
OCTAVE := octave-cli --no-gui --quiet --norc
MEX_PACKAGES := octave liboctave-dev g++ make pkg-config libfftw3-dev libismrmrd-dev libpng-dev
PYTHON_PACKAGES := python3-dev python3-pybind11 python3-numpy python3-venv python3-pip python3-setuptools python3-pytest python3-distributed
CHECK_PACKAGES := $(MEX_PACKAGES) cmake libgtest-dev ismrmrd-tools $(PYTHON_PACKAGES)
BENCH_PACKAGES := $(CHECK_PACKAGES) libbenchmark-dev

SANITIZE_BUILD_DIR ?= build-sanitize
FUZZ_BUILD_DIR ?= build-fuzz
FUZZ_SECONDS ?= 30
FUZZ_PACKAGES := clang libclang-rt-14-dev cmake make

.PHONY: all mex cli python demo demo-scan check check-sanitize fuzz bench dist check-package clean

all: mex cli

# The Octave MEX (interleaved complex layout) in matlab/, next to its help file.
mex:
	@scripts/ensure_deps.sh $(MEX_PACKAGES)
	$(OCTAVE) --eval "addpath('matlab'); build_homodyne_mex();"

# The command line homodyne-recon (ISMRMRD raw data in, images out) in
# $(BUILD_DIR)/, with the test-file writer make_scan_file.
cli:
	@scripts/ensure_deps.sh $(CHECK_PACKAGES)
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j2 --target homodyne-recon make_scan_file

# The Python package homodyne installed into the virtual environment
# $(PYTHON_VENV), which sees Debian's numpy and Dask:  $(PYTHON_VENV)/bin/python3
PYTHON_VENV ?= out/venv
python:
	@scripts/ensure_deps.sh g++ pkg-config libfftw3-dev libismrmrd-dev libpng-dev $(PYTHON_PACKAGES)
	/usr/bin/python3 -m venv --system-site-packages $(PYTHON_VENV)
	$(PYTHON_VENV)/bin/pip install --no-build-isolation .

# The main job: reconstruct partial-Fourier phantoms (single coil and 8 noisy
# coils), print errors and times, write out/homodyne_demo.png; then the same
# from raw data: a partial-Fourier ISMRMRD file made from the library's 8-coil
# phantom, reconstructed by the command line (out/scan/shepp_logan_pf*).
demo: mex cli
	$(OCTAVE) --eval "addpath('matlab'); demo_homodyne"
	scripts/demo_scan.sh $(BUILD_DIR) out/scan

# Only the raw-data part of the demo.
demo-scan: cli
	scripts/demo_scan.sh $(BUILD_DIR) out/scan

# Both MEX layouts, the unit tests, the Octave tests of the real MEX and the
# Python tests of the module built alongside, run by CTest.
check:
	@scripts/ensure_deps.sh $(CHECK_PACKAGES)
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j2
	ctest --test-dir $(BUILD_DIR) --output-on-failure

# The same tests against unit tests and MEX files built with AddressSanitizer
# and UndefinedBehaviorSanitizer; any report fails its test.
check-sanitize:
	@scripts/ensure_deps.sh $(CHECK_PACKAGES)
	cmake -S . -B $(SANITIZE_BUILD_DIR) -DCMAKE_BUILD_TYPE=Release -DHOMODYNE_SANITIZE=ON
	cmake --build $(SANITIZE_BUILD_DIR) -j2
	ctest --test-dir $(SANITIZE_BUILD_DIR) --output-on-failure

# libFuzzer targets of the numeric core (clang), FUZZ_SECONDS each, starting
# from the seeds and past findings in fuzz/corpus/.
fuzz:
	@scripts/ensure_deps.sh $(FUZZ_PACKAGES)
	cmake -S fuzz -B $(FUZZ_BUILD_DIR) -DCMAKE_CXX_COMPILER=clang++
	cmake --build $(FUZZ_BUILD_DIR) -j2
	scripts/run_fuzzers.sh $(FUZZ_BUILD_DIR) $(FUZZ_SECONDS)

# The C++ core benchmarks, the MEX commands timed from Octave, homodyne_recon
# beside Debian's bart and the vectorized chain, and the accuracy beside bart:
# one table, printed and kept in out/bench/RESULTS.md (5 to 9 minutes); then
# the command line on a 256 x 256 x 64, 8-coil file beside homodyne_recon in
# memory, printed; then the Dask example on 8 files with 1 and 2 workers and
# the Python layer's cost on one 256 x 256 x 64, 8-coil call, printed.
bench: mex
	@scripts/ensure_deps.sh $(BENCH_PACKAGES) bart octave-bart
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release -DHOMODYNE_BUILD_BENCH=ON
	cmake --build $(BUILD_DIR) -j2 --target core_bench homodyne-recon make_scan_file dump_images homodyne_python
	$(OCTAVE) --eval "addpath('matlab'); addpath('bench'); addpath('tests/common'); run_benchmarks('$(BUILD_DIR)/bench/core_bench')"
	$(OCTAVE) --eval "addpath('matlab'); addpath('bench'); compare_command_line('$(BUILD_DIR)');"
	PYTHONPATH=$(BUILD_DIR)/python /usr/bin/python3 bench/dask_throughput.py $(BUILD_DIR)

# The Octave package: out/homodyne-<version>.tar.gz, the version taken from
# package/DESCRIPTION. Users type: pkg install out/homodyne-<version>.tar.gz
VERSION := $(shell sed -n 's/^Version: *//p' package/DESCRIPTION)
DIST_TARBALL := out/homodyne-$(VERSION).tar.gz

dist:
	scripts/make_dist.sh out

# Builds the package, installs it into a temporary prefix with package lists
# of its own (the user's installed packages stay as they are), loads it and
# runs the smoke test: every function found, the demo phantom reconstructed.
check-package: dist
	@scripts/ensure_deps.sh $(MEX_PACKAGES)
	scripts/check_package.sh $(DIST_TARBALL)

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_BUILD_DIR) $(FUZZ_BUILD_DIR) out matlab/*.mex
