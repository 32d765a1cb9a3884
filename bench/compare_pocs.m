function report = compare_pocs(core_bench)
%COMPARE_POCS  POCS beside one-pass homodyne, zero filling, bart and vectorized Octave.
%
%   REPORT = COMPARE_POCS(CORE_BENCH) returns markdown text with
%   - one POCS call against one forward 3-D FFT of the same volume
%     (CORE_BENCH, the C++ benchmark program, cases BM_PocsCall and
%     BM_Fft3d: 128^3, 256 x 256 x 64 and 180 x 216 x 180 phantoms with ky
%     5/8, and 256 x 256 x 64 with kz 3/4 too; one and two threads; the
%     blocks' iterations, fewest, median and most);
%   - accuracy: the NRMSE of the magnitude against the noiseless fully
%     sampled magnitude, on the 256 x 256 x 64 phantom of DEMO_HOMODYNE,
%     three partial-Fourier cases, noiseless and with complex Gaussian noise
%     of SNR 20 (mean magnitude over the object / the noise's standard
%     deviation in the image), for zero filling, `bart homodyne`, one-pass
%     homodyne_recon, homodyne_recon's POCS (default options) and the
%     vectorized-Octave POCS (POCS_VECTORIZED) with the same iterations and
%     constraint form;
%   - speed: the whole POCS call against the vectorized-Octave POCS with
%     the same iterations, one thread each (FFTW's threads set to 1), and
%     the POCS call with all cores beside it, and the peak memory of one
%     call in a fresh process.
%   Each ratio is taken within one run; the goals are printed beside them.
%
%   Example (from the repository root, after make mex and building core_bench):
%     addpath('matlab'); addpath('bench'); addpath('tests/common'); disp(compare_pocs('build/bench/core_bench'))
%
%   See also RUN_BENCHMARKS, POCS_VECTORIZED, COMPARE_BART.

  calls = call_against_fft(core_bench);
  threads = fftw('threads');
  fftw('threads', 1);
  setenv('OMP_NUM_THREADS', '1');
  cleanup = onCleanup(@() fftw('threads', threads));

  sizes = [256 256 64];
  [image, full] = homodyne_phantom(sizes);
  reference = abs(image);
  my = sizes(2) * 3 / 8;
  mz = sizes(3) / 4;
  cases = struct('name', {'ky 5/8, missing at -ky', 'ky 5/8, missing at +ky', 'ky 5/8 at +ky, kz 3/4 at -kz'}, ...
                 'ranges', {{[], [my - 128, 127], []}, {[], [-128, 127 - my], []}, {[], [-128, 127 - my], [mz - 32, 31]}});
  object = reference > 0.1 * max(reference(:));
  sigma = mean(reference(object)) / 20 * sqrt(prod(sizes));   % k-space sigma for image SNR 20
  randn('seed', 20);
  noise = sigma / sqrt(2) * random_complex(sizes);

  rows = {};
  ratios = [];
  for noisy = [false true]
    for c = 1:numel(cases)
      k = full + noisy * noise;
      k = cut_to_ranges(k, cases(c).ranges);
      zero = abs(centred_idft(k));
      one_pass = homodyne_recon(k, 'Method', 'homodyne', 'NoiseAdaptive', false, 'Ranges', cases(c).ranges);
      started = tic;
      [pocs, ~, ~, info] = homodyne_recon(k, 'Output', 'magnitude', 'Ranges', cases(c).ranges, 'Threads', 1);
      pocs_seconds = toc(started);
      % The same work in both: the form POCS kept, its iterations, no trials,
      % no noise-adaptive step.
      started = tic;
      homodyne_recon(k, 'Output', 'magnitude', 'Ranges', cases(c).ranges, 'Threads', 1, ...
                     'Constraint', info.constraint{1}, 'Iterations', info.iterations(3), 'Tolerance', 0, ...
                     'NoiseAdaptive', false);
      same_work_seconds = toc(started);
      started = tic;
      vectorized = pocs_vectorized(k, cases(c).ranges, info.iterations(3), info.constraint{1});
      vectorized_seconds = toc(started);
      fully_sampled = abs(centred_idft(full + noisy * noise));
      bart_img = bart_homodyne(k, cases(c).ranges);
      errors = cellfun(@(img) nrmse(abs(img), reference), {fully_sampled, zero, bart_img, one_pass, pocs, vectorized});
      ratios(end + 1) = errors(5) / errors(3);
      noise_text = 'none';
      if noisy
        noise_text = 'SNR 20';
      end
      rows(end + 1, :) = {cases(c).name, noise_text, errors, info.iterations, info.constraint{1}, ...
                          pocs_seconds, same_work_seconds, vectorized_seconds};
    end
  end

  % Speed with all cores and the peak memory, on the first case.
  fftw('threads', threads);
  k = cut_to_ranges(full, cases(1).ranges);
  started = tic;
  homodyne_recon(k, 'Ranges', cases(1).ranges);
  all_cores_seconds = toc(started);
  data_file = [tempname() '.mat'];
  kspace = k;
  ranges = cases(1).ranges;
  save('-binary', data_file, 'kspace', 'ranges');
  peak_mib = peak_memory_in_child(data_file, 'homodyne_recon(complex(ones(8, 8, 8, ''single'')));', ...
    'homodyne_recon(kspace, ''Ranges'', ranges)', 1);
  delete(data_file);
  fftw('threads', 1);

  report = pocs_markdown(rows, ratios, calls, all_cores_seconds, peak_mib, numel(k) * 8 / 2^20, threads);
end

% Per case of the C++ benchmark program: the mean real time of one forward
% 3-D FFT and of one POCS call on one and two threads, and the blocks'
% iterations (fewest, median, most).
function calls = call_against_fft(binary)
  json_file = [tempname() '.json'];
  [status, output] = system(sprintf('"%s" --benchmark_filter="BM_Fft3d|BM_PocsCall" --benchmark_out=%s --benchmark_out_format=json', ...
                                    binary, json_file));
  if status ~= 0
    error('compare_pocs: %s failed:\n%s', binary, output);
  end
  cases = jsondecode(fileread(json_file)).benchmarks;
  delete(json_file);
  if isstruct(cases)
    cases = num2cell(cases);
  end
  calls = struct('name', {'128x128x128, ky 5/8', '256x256x64, ky 5/8', '180x216x180, ky 5/8', ...
                          '256x256x64, ky 5/8, kz 3/4'}, 'fft_ms', NaN, 'ms', NaN(1, 2), 'iterations', NaN(1, 3));
  for c = 1:numel(cases)
    b = cases{c};
    tokens = regexp(b.run_name, '/(\d+)', 'tokens');
    numbers = str2double([tokens{:}]);   % the case, the threads
    ms = b.real_time;   % the program reports milliseconds
    if strncmp(b.run_name, 'BM_Fft3d', 8)
      calls(numbers(1) + 1).fft_ms = ms;
    else
      calls(numbers(1) + 1).ms(numbers(2)) = ms;
      calls(numbers(1) + 1).iterations = [b.it_min, b.it_median, b.it_max];
    end
  end
end

function text = pocs_markdown(rows, ratios, calls, all_cores_seconds, peak_mib, kspace_mib, threads)
  met = {'no', 'yes'};
  speedups = [rows{:, 8}] ./ [rows{:, 7}];
  lines = {
    '## POCS'
    ''
    '| measure | value | goal | met? |'
    '|---|---|---|---|'
    sprintf('| POCS NRMSE / bart''s, median over cases | %.2f | <= 0.3 | %s |', median(ratios), met{1 + (median(ratios) <= 0.3)})
    sprintf('| POCS NRMSE / bart''s, largest | %.2f | <= 0.7 | %s |', max(ratios), met{1 + (max(ratios) <= 0.7)})
    sprintf('| whole call: vectorized-Octave POCS time / POCS time, same form and iterations, one thread (median, range %.1f-%.1f) | %.1f | >= 5 | %s |', ...
            min(speedups), max(speedups), median(speedups), met{1 + (median(speedups) >= 5)})
    sprintf('| POCS call with all cores (%d FFTW threads), first case | %.2f s | | |', threads, all_cores_seconds)
    sprintf('| peak memory of one call, first case, in a fresh process | +%.0f MiB (%.1f x k-space) | <= 3 | %s |', ...
            peak_mib, peak_mib / kspace_mib, met{1 + (peak_mib / kspace_mib <= 3)})
    ''
    '| C++ case | one 3-D FFT | POCS call, 1 thread | call / FFT (goal <= 8) | POCS call, 2 threads | 1 thread / 2 threads (goal >= 1.8) | iterations: fewest / median / most |'
    '|---|---|---|---|---|---|---|'
  };
  for c = 1:numel(calls)
    lines{end + 1} = sprintf('| %s | %.1f ms | %.0f ms | %.1f | %.0f ms | %.2f | %g / %g / %g |', calls(c).name, ...
                             calls(c).fft_ms, calls(c).ms(1), calls(c).ms(1) / calls(c).fft_ms, calls(c).ms(2), ...
                             calls(c).ms(1) / calls(c).ms(2), calls(c).iterations);
  end
  lines(end + 1:end + 3) = {
    ''
    '| case | noise | fully sampled | zero filled | bart homodyne | one-pass | POCS | vectorized POCS | iterations | form | POCS, s | same work, s | vectorized, s |'
    '|---|---|---|---|---|---|---|---|---|---|---|---|---|'
  };
  for r = 1:size(rows, 1)
    lines{end + 1} = sprintf('| %s | %s | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %g / %g / %g | %s | %.2f | %.2f | %.2f |', ...
                             rows{r, 1:2}, rows{r, 3}, rows{r, 4:8});
  end
  lines(end + 1:end + 3) = {
    ''
    ['NRMSE: ||abs(recon) - reference|| / ||reference|| over the volume, reference = the noiseless fully sampled ' ...
     'magnitude of the 256 x 256 x 64 phantom. POCS: homodyne_recon with its defaults (Hann window, automatic ' ...
     'constraint, at most 20 iterations, tolerance 2e-4), magnitude output, one thread; the vectorized POCS ' ...
     '(`bench/pocs_vectorized.m`) runs the same iterations with the same constraint form. "fully sampled": the ' ...
     'magnitude of the whole (noisy) k-space, the noise floor that no reconstruction keeping the measured samples ' ...
     'goes below by much. Times are single runs, FFTW on one thread: "POCS" the default call (with the automatic ' ...
     'constraint''s 5 trial iterations of the other form), "same work" POCS with the most iterations of a block ' ...
     'and the kept form fixed for every block, as the vectorized code runs it. Iterations: over the blocks of ' ...
     'lines (or planes) that POCS iterates on their own, the fewest, the median and the most. C++ cases: ' ...
     'Google Benchmark, mean real time over at least 2 s of calls, the phantom with the first 3/8 of ky missing, ' ...
     'default options without the noise-adaptive step, magnitude output, plans made beforehand; the FFT is ' ...
     'FFTW''s forward 3-D transform in single precision with a measured plan.']
    ''
  };
  text = sprintf('%s\n', lines{:});
end
