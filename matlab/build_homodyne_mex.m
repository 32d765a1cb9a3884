function mex_file = build_homodyne_mex(varargin)
%BUILD_HOMODYNE_MEX  Build the homodyne_mex module with the host's own MEX compiler.
%
%   BUILD_HOMODYNE_MEX builds homodyne_mex next to this file for the interleaved
%   complex layout (-R2018a), which GNU Octave and MATLAB R2018a and later use
%   to store complex arrays. Only this layout lets the in-place results of
%   complex inputs reach the caller's variable.
%
%   BUILD_HOMODYNE_MEX('Layout', 'separate') builds for separate real and
%   imaginary planes (-R2017b) instead.
%   BUILD_HOMODYNE_MEX(..., 'OutputDir', DIR) writes the module into DIR.
%   BUILD_HOMODYNE_MEX(..., 'ExtraFlags', FLAGS) appends compiler flags, for
%   example '-fsanitize=address'.
%   MEX_FILE = BUILD_HOMODYNE_MEX(...) returns the path of the built module.
%
%   The module is compiled as C++17 with -O3 -ffp-contract=off: its results
%   are defined bit for bit in single precision, and fused multiply-add (or
%   -ffast-math) would change them. -fno-math-errno changes no value; it lets
%   square roots vectorise. Where GCC supports it on x86-64, hot loops are also
%   compiled for AVX2 and chosen at load time, with identical results. The flags assume GCC or Clang; the build
%   has been tested with GNU Octave's mkoctfile only.
%
%   Example:
%     build_homodyne_mex();                       % then: help homodyne_mex
%     build_homodyne_mex('Layout', 'separate', 'OutputDir', tempdir);

  here = fileparts(mfilename('fullpath'));
  options = struct('Layout', 'interleaved', 'OutputDir', here, 'ExtraFlags', '');
  if mod(numel(varargin), 2) ~= 0
    error('build_homodyne_mex: options come as name/value pairs.');
  end
  for k = 1:2:numel(varargin)
    name = varargin{k};
    if ~ischar(name) || ~isfield(options, name)
      error('build_homodyne_mex: unknown option; use Layout, OutputDir or ExtraFlags.');
    end
    options.(name) = varargin{k + 1};
  end
  switch options.Layout
    case 'interleaved'
      api = '-R2018a';
    case 'separate'
      api = '-R2017b';
    otherwise
      error('build_homodyne_mex: Layout must be ''interleaved'' or ''separate''.');
  end

  src = fullfile(fileparts(here), 'src');
  sources = fullfile(src, {'gateway/mex_entry.cpp', 'gateway/host_arrays.cpp', ...
                           'homodyne/filter_gateway.cpp', 'homodyne/filter_weights.cpp', ...
                           'homodyne/homodyne_filter.cpp', 'homodyne/pow_third.cpp', 'phase/phase_gateway.cpp', ...
                           'phase/phase_transfer.cpp'});
  flags = ['-std=c++17 -O3 -ffp-contract=off -fno-fast-math -fno-math-errno -Wall -Wextra ' options.ExtraFlags];
  if ~exist(options.OutputDir, 'dir')
    mkdir(options.OutputDir);
  end
  mex_file = fullfile(options.OutputDir, ['homodyne_mex.' mexext()]);

  if exist('OCTAVE_VERSION', 'builtin') ~= 0
    saved = getenv('CXXFLAGS');
    setenv('CXXFLAGS', flags);
    [output, status] = mkoctfile('--mex', api, ['-I' src], '-o', mex_file, sources{:});
    setenv('CXXFLAGS', saved);
    if status ~= 0
      error('build_homodyne_mex: compilation failed:\n%s', output);
    end
  else
    mex(api, ['-I' src], ['CXXFLAGS=$CXXFLAGS ' flags], '-outdir', options.OutputDir, ...
        '-output', 'homodyne_mex', sources{:});
  end
end
