function run_benchmarks(core_bench, results_file)
%RUN_BENCHMARKS  All benchmarks of the toolbox in one table, kept in out/bench/RESULTS.md.
%
%   RUN_BENCHMARKS(CORE_BENCH) runs, one after the other on one thread:
%   - CORE_BENCH, the C++ benchmark program of the command cores and the
%     interpolation library, each case against its memory baseline
%     (READ_CORE_BENCH);
%   - the MEX commands called from Octave (TIME_MEX_COMMANDS);
%   - homodyne_recon beside bart homodyne and the vectorized chain
%     (TIME_RECON);
%   - the accuracy comparison with bart (COMPARE_BART);
%   - POCS: a call against one 3-D FFT, accuracy beside zero filling,
%     bart and one-pass homodyne with and without noise, speed against a
%     vectorized-Octave POCS (COMPARE_POCS).
%   It prints one performance table (case, time, the baseline measured in
%   the same run, ratio, goal, met?, peak memory), the interpolation
%   library's table and the accuracy comparison, and writes the same, with
%   the date and the machine, to out/bench/RESULTS.md (in the repository, not
%   tracked by git), or to RESULTS_FILE when
%   given. `make bench` builds CORE_BENCH and the MEX and calls this.
%
%   Example (from the repository root, after make mex and building core_bench):
%     addpath('matlab'); addpath('bench'); addpath('tests/common');
%     run_benchmarks('build/bench/core_bench')
%
%   See also READ_CORE_BENCH, TIME_MEX_COMMANDS, TIME_RECON, COMPARE_BART.

  if nargin < 2
    results_file = fullfile(fileparts(fileparts(mfilename('fullpath'))), 'out', 'bench', 'RESULTS.md');
  end
  machine = machine_description();
  measured = datestr(now, 'yyyy-mm-dd HH:MM');

  fprintf(2, 'run_benchmarks: C++ core benchmarks (%s), about 2 minutes\n', core_bench);
  [commands, interpolation] = read_core_bench(core_bench);
  fprintf(2, 'run_benchmarks: MEX commands called from Octave\n');
  calls = time_mex_commands();
  fprintf(2, 'run_benchmarks: homodyne_recon beside bart and the vectorized chain\n');
  recon = time_recon();
  fprintf(2, 'run_benchmarks: accuracy beside bart\n');
  accuracy = compare_bart();
  fprintf(2, 'run_benchmarks: POCS beside one-pass homodyne, bart and vectorized Octave\n');
  pocs = compare_pocs(core_bench);
  fprintf(2, 'run_benchmarks: noisy partial Fourier, single coil and 8 coils\n');
  coils = compare_coils();

  report = [header_markdown(measured, machine), ...
            performance_markdown(commands, calls, recon), ...
            interpolation_markdown(interpolation), ...
            regexprep(accuracy, '^#', '##', 'lineanchors'), pocs, coils];
  publish_report(report, results_file);
end

function text = header_markdown(measured, machine)
  text = lines_to_text({
    '# Benchmarks'
    ''
    sprintf('Measured %s on %s. Produced by `make bench` (`bench/run_benchmarks.m`).', measured, machine)
    ['Everything runs on one thread (`OMP_NUM_THREADS=1`, `fftw(''threads'', 1)`; the module has no threads). ' ...
     'The machine is shared and noisy: read the ratios, each taken within one run, rather than the absolute times.']
    ''
  });
end

function text = performance_markdown(commands, calls, recon)
  rows = {};
  for c = commands
    rows(end + 1, :) = {c.name, duration(c.ms / 1000), c.baseline, duration(c.baseline_ms / 1000), ...
                        sprintf('%.2f', c.ratio), goal_text('<= ', c.goal), met_text(c.ratio <= c.goal, c.goal), ''};
  end
  for c = calls
    memory = sprintf('+%.1f MiB', c.peak_mib);
    if c.output_mib > 0
      memory = sprintf('%s (returns %.1f MiB)', memory, c.output_mib);
    end
    rows(end + 1, :) = {['MEX from Octave: ' c.name], duration(c.seconds), 'Octave `work .* weights`', ...
                        duration(c.baseline), sprintf('%.2f', c.seconds / c.baseline), '', '', memory};
  end
  for c = recon
    name = ['homodyne_recon ' c.name];
    ratio = c.recon / c.bart;
    rows(end + 1, :) = {name, duration(c.recon), '`bart homodyne`', duration(c.bart), sprintf('%.2f', ratio), ...
                        '<= 0.7', met_text(ratio <= 0.7, 0.7), ...
                        sprintf('+%.0f MiB (%.1f x k-space)', c.peak_mib, c.peak_mib / c.kspace_mib)};
    ratio = c.recon / c.recon_fft;
    rows(end + 1, :) = {name, duration(c.recon), 'its own FFT step', duration(c.recon_fft), ...
                        sprintf('%.2f', ratio), '<= 1.25', met_text(ratio <= 1.25, 1.25), ''};
    speedup = c.vectorized / c.recon;
    rows(end + 1, :) = {name, duration(c.recon), 'vectorized Octave', duration(c.vectorized), ...
                        sprintf('%.1f (speed-up)', speedup), 'speed-up >= 20', met_text(speedup >= 20, 20), ''};
  end

  agreement = strjoin(arrayfun(@(c) sprintf('%s %.1e (%.1e over the object)', c.name, c.nrmse_all, c.nrmse_object), ...
                               recon, 'UniformOutput', false), ', ');
  bound = strjoin(arrayfun(@(c) sprintf('%s %.1f', c.name, c.vectorized / c.recon_fft), recon, 'UniformOutput', false), ', ');
  table = {'| case | time | baseline, same run | baseline time | ratio | goal | met? | peak memory |'
           '|---|---|---|---|---|---|---|---|'};
  for r = 1:size(rows, 1)
    table{end + 1, 1} = ['| ' strjoin(rows(r, :), ' | ') ' |'];
  end
  text = lines_to_text([{'## Performance'; ''}; table; {
    ''
    ['- Ratio: time / baseline time, except against the vectorized chain, where it is the speed-up ' ...
     '(baseline time / time).']
    ['- Core rows: `core_bench` (Google Benchmark), 256x256x128 complex single, the plain-buffer cores in both ' ...
     'complex layouts; mean time per call over at least 1 s of calls, each on the same data, the case and its ' ...
     'baseline taking turns call by call. Baselines: for ' ...
     '"filter" a plain in-place pass multiplying the data by a weight array plus a copy of the block''s bytes ' ...
     'into a fresh array; for "multiply" a plain in-place pass over the data.']
    ['- "filter" with three weighted axes: the geometric mean needs a cube root rounded exactly as pow rounds ' ...
     'it for every distinct pair of y and z weights and every x position (161 x 81 rows of 256 here). Each ' ...
     'root is the product of per-axis roots corrected for the rounding of the single-precision product, ' ...
     'with pow only where that leaves the float in doubt; the rows are made while the one pass that crops ' ...
     'and weights the data runs.']
    ['- MEX from Octave: one `homodyne_mex` call on 256x256x128 complex single (ranges [-80 127] on x, y and ' ...
     '[-40 63] on z as the axes are added; a 64x64x32 image for "multiply"), including the host''s creation of ' ...
     'the returned block; median of 7, each on a fresh copy, taking turns with the baseline. No goal: the ' ...
     'goals hold for the cores.']
    ['- homodyne_recon: the phantom''s k-space (times 8 smooth coil sensitivities for x8) with the first 3/8 ' ...
     'of the ky planes missing; ranges given to `homodyne_recon` and to the vectorized chain ' ...
     '(`bench/homodyne_recon_vectorized.m`, `interpn`), the sampled fraction to bart. Medians of 3 runs after ' ...
     'a warm-up, the three methods taking turns. bart is the bare process on cfl files already written to ' ...
     '/dev/shm (process start and its file input and output included), on k-space mirrored along y because it ' ...
     'wants the acquired part at the low-index end; it treats the coil dimension as independent volumes.']
    ['- Vectorized chain against homodyne_recon, NRMSE ||v - r|| / ||r||: ' agreement '. The whole-array ' ...
     'figure is larger where the low-resolution image is rounding noise (outside the object''s projection ' ...
     'along y), so that its phase, and the sign of the result there, is arbitrary in both.']
    ['- homodyne_recon (one-pass, ''Method'' ''homodyne'', ''NoiseAdaptive'' false) against its FFT work: ' ...
     'the median time over the median seconds of the same two inverse DFTs (the k-space and its symmetric ' ...
     'block) in Octave''s FFTW, three further runs.']
    ['- Bound on the speed-up over the vectorized chain: vectorized time / those FFTs = ' bound '.']
    ['- Peak memory: the peak resident set size that one call adds (VmHWM after the call minus VmRSS just ' ...
     'before it, the peak mark reset through /proc/self/clear_refs), in a fresh octave-cli per case after ' ...
     'loading the data and a warm-up call on small data (`bench/peak_memory_in_child.m`).']
    ''
  }]);
end

function text = interpolation_markdown(cases)
  volumes = unique([cases.volumes]);
  methods = unique({cases.method}, 'stable');
  header = ['| method | ' strjoin(arrayfun(@(v) sprintf('%d %s', v, plural_volumes(v)), volumes, 'UniformOutput', false), ' | ') ' |'];
  lines = {'### Interpolation library'
           ''
           ['`core_bench`: 64x64x32 volumes queried at 256x256x128 points, nanoseconds per point and volume, ' ...
            'and in brackets that time over a plain memory stream''s time per float over as many floats (same run).']
           ''
           header
           ['|---' repmat('|---', 1, numel(volumes)) '|']};
  for m = 1:numel(methods)
    cells = cell(1, numel(volumes));
    for v = 1:numel(volumes)
      c = cases(strcmp({cases.method}, methods{m}) & [cases.volumes] == volumes(v));
      if isnan(c.x_stream)
        cells{v} = sprintf('%.2f ns', c.ns);
      else
        cells{v} = sprintf('%.1f ns (%.1f x)', c.ns, c.x_stream);
      end
    end
    name = methods{m};
    if strcmp(name, 'stream')
      name = 'plain stream, per float';
    end
    lines{end + 1} = ['| ' name ' | ' strjoin(cells, ' | ') ' |'];
  end
  lines{end + 1} = '';
  text = lines_to_text(lines);
end

function word = plural_volumes(count)
  word = 'volume';
  if count ~= 1
    word = 'volumes';
  end
end

function text = duration(seconds)
  if seconds < 1
    text = sprintf('%.1f ms', 1000 * seconds);
  else
    text = sprintf('%.2f s', seconds);
  end
end

function text = goal_text(prefix, limit)
  text = '';
  if ~isnan(limit)
    text = sprintf('%s%g', prefix, limit);
  end
end

function text = met_text(met, limit)
  text = '';
  if ~isnan(limit)
    text = 'no';
    if met
      text = 'yes';
    end
  end
end

function text = lines_to_text(lines)
  text = sprintf('%s\n', lines{:});
end
