function mex_files = build_homodyne_mex(varargin)
%BUILD_HOMODYNE_MEX  Build the toolbox's MEX modules with the host's own MEX compiler.
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
%   MEX_FILES = BUILD_HOMODYNE_MEX(...) returns the paths of the built modules
%   (a cell array): homodyne_mex and every other MEX entry point of the toolbox
%   (ismrmrd_mex, the raw-data reader, needs Debian's libismrmrd-dev,
%   libfftw3-dev and libpng-dev).
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
  flags = ['-std=c++17 -O3 -ffp-contract=off -fno-fast-math -fno-math-errno -Wall -Wextra ' options.ExtraFlags];
  if ~exist(options.OutputDir, 'dir')
    mkdir(options.OutputDir);
  end
  modules = mex_modules(src);
  mex_files = cell(1, numel(modules));
  for m = 1:numel(modules)
    mex_files{m} = build_module(modules(m), src, api, flags, options.OutputDir);
  end
end

% Every MEX entry point of the toolbox: its name, its sources below src/, the
% libraries it links and the extra include folders it needs. The first is the
% homodyne module itself.
function modules = mex_modules(src)
  modules = struct('name', {}, 'sources', {}, 'libraries', {}, 'includes', {});
  modules(end + 1) = struct('name', 'homodyne_mex', 'libraries', {{}}, 'includes', {{}}, 'sources', ...
    {{'gateway/mex_entry.cpp', 'gateway/host_arrays.cpp', 'homodyne/filter_gateway.cpp', ...
      'homodyne/filter_weights.cpp', 'homodyne/homodyne_filter.cpp', 'homodyne/pow_third.cpp', ...
      'phase/phase_gateway.cpp', 'phase/phase_transfer.cpp'}});
  % The reconstruction core (POCS and one-pass homodyne on FFTW) behind homodyne_recon.
  recon = dir(fullfile(src, 'recon', '*.cpp'));
  modules(end + 1) = struct('name', 'homodyne_recon_mex', 'libraries', {{'fftw3f', 'pthread'}}, 'includes', {{}}, ...
    'sources', {[{'front/mex/recon_entry.cpp', 'front/mex/recon_command.cpp', 'front/mex/option_values.cpp', ...
                  'front/mex/info_struct.cpp', 'front/mex/array_input.cpp', 'front/mex/result_array.cpp', ...
                  'front/mex/step_commands.cpp', 'front/mex/phantom_command.cpp', ...
                  'gateway/host_arrays.cpp', 'homodyne/filter_weights.cpp', 'homodyne/homodyne_filter.cpp', ...
                  'homodyne/pow_third.cpp', 'phase/phase_transfer.cpp'}, strcat('recon/', {recon.name})]});
  modules(end + 1) = struct('name', 'ismrmrd_mex', 'libraries', {{'ismrmrd', 'hdf5_serial', 'fftw3f', 'png'}}, ...
    'includes', {hdf5_includes()}, 'sources', ...
    {{'front/mex/raw_kspace_entry.cpp', 'gateway/host_arrays.cpp', 'io/raw_file_check.cpp', ...
      'io/raw_kspace_reader.cpp', 'io/readout_crop.cpp', 'io/readout_table.cpp', ...
      'io/sampled_range.cpp', ...
      'io/image_writer.cpp', 'io/png_montage.cpp'}});
end

% The HDF5 include folders that the ISMRMRD headers need: from pkg-config where
% it knows HDF5, else Debian's serial HDF5 folder (whose library, hdf5_serial,
% the reader links for its block reads of the readout table).
function includes = hdf5_includes()
  [status, flags] = system('pkg-config --cflags-only-I hdf5 2>/dev/null');
  includes = regexp(strtrim(flags), '(?<=-I)\S+', 'match');
  if status ~= 0 || isempty(includes)
    includes = {'/usr/include/hdf5/serial'};
  end
end

function mex_file = build_module(module, src, api, flags, output_dir)
  sources = fullfile(src, module.sources);
  libraries = strcat('-l', module.libraries);
  includes = strcat('-I', [{src}, module.includes]);
  mex_file = fullfile(output_dir, [module.name '.' mexext()]);
  if exist('OCTAVE_VERSION', 'builtin') ~= 0
    saved = getenv('CXXFLAGS');
    setenv('CXXFLAGS', flags);
    [output, status] = mkoctfile('--mex', api, includes{:}, '-o', mex_file, sources{:}, libraries{:});
    setenv('CXXFLAGS', saved);
    if status ~= 0
      error('build_homodyne_mex: compilation of %s failed:\n%s', module.name, output);
    end
  else
    mex(api, includes{:}, ['CXXFLAGS=$CXXFLAGS ' flags], '-outdir', output_dir, ...
        '-output', module.name, sources{:}, libraries{:});
  end
end
