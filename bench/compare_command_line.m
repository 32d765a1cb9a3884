function lines = compare_command_line(build_dir, methods)
%COMPARE_COMMAND_LINE  homodyne-recon on a raw-data file beside homodyne_recon in memory.
%
%   LINES = COMPARE_COMMAND_LINE(BUILD_DIR) writes a 256 x 256 x 64, 8-coil
%   ISMRMRD file (the demo phantom times eight smooth coil sensitivities,
%   ky 5/8 with the first 3/8 of the planes missing) with BUILD_DIR's
%   tests/tools/make_scan_file, then per method (default {'pocs',
%   'homodyne'}, or METHODS) times, in one run:
%   - the in-memory Octave path on the k-space that READ_ISMRMRD_KSPACE
%     returned (reading excluded): HOMODYNE_RECON with 'Output' 'magnitude'
%     and 'Coils' 4 (combined adaptively, noise-adaptive step on, as the
%     command line does by default; all cores). Its first
%     call in a session measures the FFTW plans; the call timed is the
%     second, the one a session meets from then on;
%   - the command line BUILD_DIR/homodyne-recon on the file with the same
%     options (--output magnitude), twice with
%     one --wisdom file: starting the process, reading, reconstructing,
%     writing the images (all cores). The first run measures the plans and keeps them in the file,
%     the second (the one timed against Octave) reads them, as a batch of
%     files run one process each does after its first.
%   It prints and returns one line per method: the times, the ratio of the
%   command line with wisdom to Octave (goal <= 1.3), the first run's, and
%   the largest difference of the two images relative to the largest value.
%
%   Example (from the repository root, after make mex and make cli):
%     addpath('matlab'); addpath('bench'); compare_command_line('build')
%
%   See also READ_ISMRMRD_KSPACE, HOMODYNE_RECON, RUN_BENCHMARKS.

  if nargin < 2
    methods = {'pocs', 'homodyne'};
  end
  program = fullfile(build_dir, 'homodyne-recon');
  folder = fullfile(tempdir(), sprintf('homodyne_cli_bench_%d', getpid()));
  mkdir(folder);
  cleanup = onCleanup(@() remove_folder(folder));
  [file, ranges] = scan_file(build_dir, folder);
  [kspace, acq] = read_ismrmrd_kspace(file);
  assert(isequal(acq.ranges, ranges));
  lines = {};
  for m = 1:numel(methods)
    options = {'Method', methods{m}, 'Output', 'magnitude', 'Ranges', acq.ranges, 'Coils', 4};
    homodyne_recon(kspace, options{:});
    started = tic;
    img = homodyne_recon(kspace, options{:});
    octave_seconds = toc(started);

    images = fullfile(folder, 'images.h5');
    wisdom = fullfile(folder, 'wisdom.txt');
    command = sprintf('"%s" --quiet --output magnitude --method %s --wisdom "%s" "%s" "%s"', program, methods{m}, ...
                      wisdom, file, images);
    cli_seconds = [0 0];
    for run = 1:2
      started = tic;
      [status, output] = system(command);
      cli_seconds(run) = toc(started);
      assert(status == 0, output);
    end
    cli = read_images(build_dir, images, size(img));
    difference = max(abs(cli(:) - img(:))) / max(img(:));
    lines{end + 1} = sprintf(['256x256x64, 8 coils, %s: command line (read, reconstruct, write) %.2f s, ' ...
                              'Octave in memory %.2f s, ratio %.2f (goal <= 1.3); first run, measuring its plans, ' ...
                              '%.2f s, ratio %.2f; images differ by %.1e'], methods{m}, cli_seconds(2), ...
                             octave_seconds, cli_seconds(2) / octave_seconds, cli_seconds(1), ...
                             cli_seconds(1) / octave_seconds, difference);
    fprintf('%s\n', lines{end});
  end
end

% The phantom's k-space times eight smooth coil sensitivities, ky cut to
% 5/8, as an ISMRMRD file.
function [file, ranges] = scan_file(build_dir, folder)
  sizes = [256 256 64];
  coils = 8;
  image = homodyne_phantom(sizes);
  [x, y] = ndgrid(linspace(-1, 1, sizes(1)), linspace(-1, 1, sizes(2)));
  raw = fullfile(folder, 'kspace.raw');
  fid = fopen(raw, 'w');
  for c = 1:coils
    sensitivity = single(exp(-(x - cos(2 * pi * c / coils)).^2 - (y - sin(2 * pi * c / coils)).^2 + 1i * c * x));
    k = fftshift(fftn(ifftshift(image .* sensitivity)));
    fwrite(fid, [real(k(:)), imag(k(:))].', 'float32');
  end
  fclose(fid);
  ranges = {[], [-32 127], []};
  file = fullfile(folder, 'scan.h5');
  [status, output] = system(sprintf('"%s" "%s" --kspace "%s" %d %d %d %d 1 --keep-y %d %d', ...
                                    fullfile(build_dir, 'tests', 'tools', 'make_scan_file'), file, raw, ...
                                    sizes, coils, ranges{2}));
  assert(status == 0, output);
  delete(raw);
end

% The images of the command line's output, through its test helper.
function values = read_images(build_dir, images, sizes)
  raw = [images '.raw'];
  [status, output] = system(sprintf('"%s" "%s" "%s"', fullfile(build_dir, 'tests', 'tools', 'dump_images'), ...
                                    images, raw));
  assert(status == 0, output);
  fid = fopen(raw, 'r');
  values = reshape(fread(fid, Inf, 'float32=>single'), sizes);
  fclose(fid);
  delete(raw);
end

function remove_folder(folder)
  confirm_recursive_rmdir(false, 'local');
  rmdir(folder, 's');
end
