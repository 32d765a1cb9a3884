function results = time_recon(repeats)
%TIME_RECON  One-pass homodyne_recon beside bart homodyne and the vectorized chain, single threaded.
%
%   RESULTS = TIME_RECON() times the whole HOMODYNE_RECON on 5/8 partial-
%   Fourier phantoms (the first 3/8 of the ky planes missing, ranges given)
%   of 256x256x64 (the demo's size), 128x128x128, 256x256x128 and
%   128x128x128x8 (the phantom times eight smooth coil sensitivities), beside Debian's 'bart homodyne' on the same
%   data and beside HOMODYNE_RECON_VECTORIZED. Everything runs on one
%   thread: OMP_NUM_THREADS=1 for bart, fftw('threads', 1) for Octave.
%   Each method gets one warm-up run per case, then the three take turns
%   for REPEATS runs (default 3), so that a slow spell of the shared
%   machine hits all of them alike; the medians are returned.
%
%   bart runs as the bare command on cfl files already written (in
%   /dev/shm when there is one), so its time includes starting the process
%   and its own file input and output. It wants the acquired part at the
%   low-index end, so it gets the k-space mirrored along y (k -> -k) and a
%   fraction that counts samples up to the last acquired plane; it treats
%   dimension 4 (coils) as independent volumes.
%
%   RESULTS is a struct array, one element per case, with fields
%     name          '128x128x128', ...
%     recon, bart, vectorized   median seconds
%     recon_fft     seconds of the one-pass method's FFT work in Octave's own
%                   FFTW (median of REPEATS: the centred inverse DFT of the
%                   k-space and of its symmetric block): vectorized / recon_fft
%                   bounds the speed-up over the vectorized chain
%     nrmse_all     ||vectorized - recon|| / ||recon|| over the whole array
%     nrmse_object  the same over the object (where the phantom is non-zero)
%     peak_mib      peak resident memory that one homodyne_recon call adds,
%                   measured in a fresh octave-cli (PEAK_MEMORY_IN_CHILD)
%     kspace_mib    size of the complex single k-space
%
%   See also HOMODYNE_RECON_VECTORIZED, PEAK_MEMORY_IN_CHILD, RUN_BENCHMARKS.

  if nargin < 1
    repeats = 3;
  end
  setenv('OMP_NUM_THREADS', '1');
  restore_threads = single_threaded();
  scratch = scratch_folder();

  names = {'256x256x64', '128x128x128', '256x256x128', '128x128x128x8'};
  sizes = {[256 256 64], [128 128 128], [256 256 128], [128 128 128]};
  coils = {1, 1, 1, 8};
  results = struct('name', names, 'recon', NaN, 'bart', NaN, 'vectorized', NaN, 'recon_fft', NaN, 'nrmse_all', NaN, ...
                   'nrmse_object', NaN, 'peak_mib', NaN, 'kspace_mib', NaN);
  for c = 1:numel(names)
    fprintf(2, 'time_recon: %s\n', names{c});
    [kspace, ranges, object] = partial_phantom(sizes{c}, coils{c});
    bart_files = {fullfile(scratch, 'time_recon_kspace'), fullfile(scratch, 'time_recon_image')};
    mirrored = mirror_k(kspace, 2);
    writecfl(bart_files{1}, mirrored);
    held = any(reshape(permute(mirrored ~= 0, [2 1 3 4]), size(mirrored, 2), []), 2);
    bart_call = sprintf('bart homodyne 1 %.6f %s %s', find(held, 1, 'last') / numel(held), bart_files{:});
    clear mirrored;

    one_pass = {'Ranges', ranges, 'Method', 'homodyne', 'NoiseAdaptive', false};
    methods = {@() homodyne_recon(kspace, one_pass{:}), @() run_bart(bart_call), ...
               @() homodyne_recon_vectorized(kspace, ranges)};
    seconds = zeros(repeats + 1, numel(methods));
    images = cell(1, numel(methods));
    for r = 1:repeats + 1
      for m = 1:numel(methods)
        started = tic;
        images{m} = methods{m}();
        seconds(r, m) = toc(started);
      end
    end
    check_bart_output(bart_files{2}, size(kspace));
    for f = 1:2
      delete([bart_files{f} '.cfl'], [bart_files{f} '.hdr']);
    end
    medians = median(seconds(2:end, :), 1);
    [results(c).recon, results(c).bart, results(c).vectorized] = deal(medians(1), medians(2), medians(3));
    fft_seconds = zeros(1, repeats);
    block = symmetric_block(kspace, ranges);
    for r = 1:repeats
      started = tic;
      centred_idft(kspace);
      centred_idft(block);
      fft_seconds(r) = toc(started);
    end
    results(c).recon_fft = median(fft_seconds);

    [recon, vectorized] = deal(double(images{1}), double(images{3}));
    results(c).nrmse_all = norm(vectorized(:) - recon(:)) / norm(recon(:));
    inside = repmat(object, [1 1 1 coils{c}]);
    results(c).nrmse_object = norm(vectorized(inside) - recon(inside)) / norm(recon(inside));
    clear images recon vectorized;

    data_file = fullfile(scratch, 'time_recon_kspace.mat');
    save(data_file, 'kspace', 'ranges', '-v6');
    results(c).peak_mib = peak_memory_in_child(data_file, 'homodyne_recon(complex(ones(8, 8, 8, ''single'')));', ...
                                               'homodyne_recon(kspace, ''Ranges'', ranges, ''Method'', ''homodyne'')', 1);
    delete(data_file);
    results(c).kspace_mib = numel(kspace) * 8 / 2^20;
  end
  restore_threads();
end

% The symmetrically sampled centre of KSPACE: per partial axis the planes
% k = -m .. m, m the smaller reach of its range.
function block = symmetric_block(kspace, ranges)
  index = repmat({':'}, 1, ndims(kspace));
  for axis = 1:numel(ranges)
    r = ranges{axis};
    if ~isempty(r)
      m = min(-r(1), r(2));
      index{axis} = floor(size(kspace, axis) / 2) + 1 + (-m:m);
    end
  end
  block = kspace(index{:});
end

% Octave's FFTs (or MATLAB's computations) on one thread; returns the
% function that restores the previous setting.
function restore = single_threaded()
  if exist('OCTAVE_VERSION', 'builtin') ~= 0
    previous = fftw('threads');
    fftw('threads', 1);
    restore = @() fftw('threads', previous);
  else
    previous = maxNumCompThreads(1);
    restore = @() maxNumCompThreads(previous);
  end
end

% The phantom's k-space (times COILS smooth coil sensitivities when COILS >
% 1) with the first 3/8 of the ky planes set to 0, the sampled RANGES, and
% where the object is (the phantom's non-zero voxels).
function [kspace, ranges, object] = partial_phantom(sizes, coils)
  [image, kspace] = homodyne_phantom(sizes);
  object = image ~= 0;
  if coils > 1
    kspace = image .* coil_sensitivities(sizes, coils);
    for d = 1:3
      kspace = fftshift(fft(ifftshift(kspace, d), [], d), d);
    end
  end
  missing = 3 * sizes(2) / 8;
  kspace(:, 1:missing, :, :) = 0;
  ranges = {[], [missing - sizes(2) / 2, sizes(2) / 2 - 1], []};
end

% Gaussian receive profiles around the object in the x-y plane, each with
% its own smooth phase: sizes(1) x sizes(2) x sizes(3) x COILS, single.
function s = coil_sensitivities(sizes, coils)
  axis_of = @(n) ((0:n - 1)' - floor(n / 2)) * (2 / n);
  x = axis_of(sizes(1));
  y = reshape(axis_of(sizes(2)), 1, []);
  z = reshape(axis_of(sizes(3)), 1, 1, []);
  angle = reshape(2 * pi * (0:coils - 1) / coils, 1, 1, 1, []);
  distance2 = (x - 1.2 * cos(angle)) .^ 2 + (y - 1.2 * sin(angle)) .^ 2 + 0.5 * z .^ 2;
  s = single(exp(-distance2 / 1.5) .* exp(1i * (angle + 0.8 * (x .* cos(angle) + y .* sin(angle)))));
end

function img = run_bart(call)
  status = system(call);
  if status ~= 0
    error('time_recon: "%s" failed.', call);
  end
  img = [];
end

% bart must have made one image of the data's full size, coils included.
function check_bart_output(file, sizes)
  header = strsplit(strtrim(fileread([file '.hdr'])), '\n');
  dims = sscanf(header{2}, '%d')';
  if ~isequal(dims(1:numel(sizes)), sizes) || any(dims(numel(sizes) + 1:end) ~= 1)
    error('time_recon: bart wrote an image of %s, not of the k-space''s size.', mat2str(dims));
  end
end

% Where the cfl files go: memory-backed when the system has /dev/shm, so
% that bart's file input and output cost as little as they can.
function folder = scratch_folder()
  folder = '/dev/shm';
  if exist(folder, 'dir') ~= 7
    folder = tempdir();
  end
end
