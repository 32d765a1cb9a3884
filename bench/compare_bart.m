function report = compare_bart(results_file)
%COMPARE_BART  homodyne_recon beside BART's homodyne command on the demo's phantom.
%
%   COMPARE_BART reconstructs partial-Fourier k-spaces of the 256 x 256 x 64
%   phantom of DEMO_HOMODYNE with HOMODYNE_RECON and with the 'homodyne'
%   command of BART (Debian packages bart and octave-bart), both single
%   threaded. It writes the NRMSE of the magnitude against the fully sampled
%   reference and the median time of three runs (after a warm-up run) to
%   out/bench/compare_bart.md, with the date and the machine, and prints the same.
%   COMPARE_BART(RESULTS_FILE) writes to RESULTS_FILE instead.
%   REPORT = COMPARE_BART() returns that markdown text and neither prints
%   nor writes it (RUN_BENCHMARKS puts it into its own report).
%
%   BART's conventions differ from ours in three ways, bridged here:
%   - it expects the acquired part of an axis at the low-index end, so a
%     k-space whose missing part lies at the negative end is mirrored
%     (k -> -k) for it, and its image mirrored back;
%   - its fraction counts samples: the acquired share of the axis from
%     index 1 to the last non-zero plane;
%   - its centred FFT is unitary, so its image is divided by sqrt(N).
%   It weights one axis per call; the two-axis case chains two calls, the
%   second on the image of the first ('-I'), in both orders.
%
%   Times: homodyne_recon(k) alone (no optional outputs); BART once as the
%   bare command on files already written (process start and its own file
%   input and output included) and once through octave-bart's bart() from
%   memory to memory.
%
%   Example (from the repository root, after make mex):
%     addpath('matlab'); addpath('bench'); addpath('tests/common'); compare_bart
%
%   See also RUN_BENCHMARKS, MACHINE_DESCRIPTION.

  here = fileparts(mfilename('fullpath'));
  if nargin < 1
    results_file = fullfile(fileparts(here), 'out', 'bench', 'compare_bart.md');
  end
  if exist('bart', 'file') ~= 2
    error('compare_bart: octave-bart''s bart() is not on the path; install bart and octave-bart.');
  end
  machine = machine_description();
  setenv('OMP_NUM_THREADS', '1');
  if exist('OCTAVE_VERSION', 'builtin') ~= 0
    restore_threads = fftw('threads');
    fftw('threads', 1);
  else
    restore_threads = maxNumCompThreads(1);
  end

  sizes = [256 256 64];
  [image, full] = homodyne_phantom(sizes);
  reference = abs(image);
  missing_y = sizes(2) * 3 / 8;
  missing_z = sizes(3) / 4;
  % bart_orders: one row of axes per chain of BART calls.
  cases = struct('name', {'ky 5/8, missing at -ky', 'ky 5/8, missing at +ky', 'ky 5/8 at +ky, kz 3/4 at -kz'}, ...
                 'kspace', {full, full, full}, 'mirrored_for_bart', {2, [], 3}, 'bart_orders', {2, 2, [2 3; 3 2]});
  cases(1).kspace(:, 1:missing_y, :) = 0;
  cases(2).kspace(:, end - missing_y + 1:end, :) = 0;
  cases(3).kspace(:, end - missing_y + 1:end, :) = 0;
  cases(3).kspace(:, :, 1:missing_z) = 0;

  rows = {};
  for c = 1:numel(cases)
    k = cases(c).kspace;
    rows(end + 1, :) = {cases(c).name, 'zero filled', nrmse(abs(centred_idft(k)), reference), NaN, NaN};
    [img, seconds] = median_time(@() homodyne_recon(k));
    rows(end + 1, :) = {'', 'homodyne_recon', nrmse(abs(img), reference), seconds, NaN};
    for order = 1:size(cases(c).bart_orders, 1)
      dims = cases(c).bart_orders(order, :);
      [img, command_seconds, wrapper_seconds] = run_bart(k, dims, cases(c).mirrored_for_bart);
      rows(end + 1, :) = {'', bart_label(dims), nrmse(abs(img), reference), command_seconds, wrapper_seconds};
    end
  end

  if exist('OCTAVE_VERSION', 'builtin') ~= 0
    fftw('threads', restore_threads);
  else
    maxNumCompThreads(restore_threads);
  end
  report = results_markdown(rows, sizes, machine);
  if nargout > 0
    return;
  end
  publish_report(report, results_file);
end

% Median wall time of three runs after a warm-up run, with the last result.
function [result, seconds] = median_time(fn)
  fn();
  times = zeros(1, 3);
  for r = 1:3
    started = tic;
    result = fn();
    times(r) = toc(started);
  end
  seconds = median(times);
end

% BART's homodyne along DIMS (1-based, in order), the first call on k-space
% and every further one on the image of the one before ('-I'). Dimensions
% listed in MIRRORED are mirrored for BART and its image mirrored back.
function [img, command_seconds, wrapper_seconds] = run_bart(k, dims, mirrored)
  for dim = mirrored
    k = mirror_k(k, dim);
  end
  commands = cell(1, numel(dims));
  for a = 1:numel(dims)
    others = setdiff(1:3, dims(a));
    planes = any(any(k ~= 0, others(1)), others(2));
    fraction = find(planes(:), 1, 'last') / size(k, dims(a));
    image_input = '';
    if a > 1
      image_input = '-I ';
    end
    commands{a} = sprintf('homodyne %s%d %.6f', image_input, dims(a) - 1, fraction);
  end

  files = cellfun(@(~) tempname(), cell(1, numel(commands) + 1), 'UniformOutput', false);
  writecfl(files{1}, k);
  times = zeros(1, 4);
  for r = 1:4
    started = tic;
    for a = 1:numel(commands)
      status = system(sprintf('bart %s %s %s', commands{a}, files{a}, files{a + 1}));
      if status ~= 0
        error('compare_bart: "bart %s" failed.', commands{a});
      end
    end
    times(r) = toc(started);
  end
  command_seconds = median(times(2:end));   % the first run warms up
  for f = 1:numel(commands) + 1
    delete([files{f} '.cfl'], [files{f} '.hdr']);
  end

  [img, wrapper_seconds] = median_time(@() chained_bart(k, commands));
  img = abs(img) / sqrt(numel(k));
  for dim = mirrored
    img = mirror_k(img, dim);
  end
end

function x = chained_bart(x, commands)
  for a = 1:numel(commands)
    x = bart(commands{a}, x);
  end
end

function label = bart_label(dims)
  names = 'xyz';
  label = ['bart homodyne, ' strjoin(arrayfun(@(d) names(d), dims, 'UniformOutput', false), ' then ')];
end

function text = results_markdown(rows, sizes, machine)
  lines = {
    '# Homodyne reconstruction beside BART'
    ''
    sprintf('Measured %s on %s, single threaded', datestr(now, 'yyyy-mm-dd HH:MM'), machine)
    '(`OMP_NUM_THREADS=1`, `fftw(''threads'', 1)`). Produced by `bench/compare_bart.m` (`make bench`).'
    ''
    sprintf(['Data: the %d x %d x %d phantom of `demo_homodyne` (complex single k-space, no noise). ' ...
             'NRMSE: ||abs(recon) - reference|| / ||reference|| over the volume, reference = the fully ' ...
             'sampled magnitude. Times: median of 3 runs after a warm-up run. BART wants the acquired part at the low-index ' ...
             'end and a fraction that counts samples; k-spaces missing the negative end are mirrored ' ...
             '(k -> -k) for it and its image mirrored back; its unitary FFT scale is divided out. ' ...
             'It weights one axis per call, so the two-axis case chains two calls (the second with `-I` ' ...
             'on the image of the first), in both orders. "time" is the `homodyne_recon` call, or the bare ' ...
             '`bart` processes on cfl files already written; "via bart()" is octave-bart from memory to memory.'], sizes)
    ''
    '| case | method | NRMSE | time, s | time via bart(), s |'
    '|---|---|---|---|---|'
  };
  for r = 1:size(rows, 1)
    lines{end + 1} = sprintf('| %s | %s | %.4f | %s | %s |', rows{r, 1:3}, ...
                             number_or_blank(rows{r, 4}, '%.2f'), number_or_blank(rows{r, 5}, '%.2f'));
  end
  text = sprintf('%s\n', lines{:});
end

function s = number_or_blank(value, format)
  if isnan(value)
    s = '';
  else
    s = sprintf(format, value);
  end
end
