function report = compare_coils()
%COMPARE_COILS  Noisy partial Fourier, single coil and 8 coils, beside bart, zero filling and textbook POCS.
%
%   REPORT = COMPARE_COILS() returns markdown text with, for slices of the
%   phantom of DEMO_HOMODYNE (256 x 256), a 128 x 128 x 32 volume (two
%   partial axes, or kz alone) and anatomy-like slices (TEXTURED_IMAGE: soft
%   edges and texture), with
%   complex Gaussian noise (SNR = mean object magnitude / noise sd in the
%   image, per coil image), the NRMSE of the magnitude against the noiseless
%   fully sampled image of:
%     floor       the fully sampled noisy image (RSS of the coils);
%     full, same call  the fully sampled noisy k-space through the same
%                 homodyne_recon call as the partial data (defaults,
%                 magnitude output): the anchor a partial acquisition is
%                 compared with;
%     full, real  the classic phase-corrected real part of the fully
%                 sampled image, Re(x e^{-i phi}), phi the phase of its
%                 Hann-windowed centre (a quarter of every axis; with coils
%                 the real part of sum conj(l_c) x_c / sqrt(sum |l_c|^2),
%                 l_c those windowed coil images);
%     zero filled (RSS of the coils);
%     bart        `bart homodyne`, per coil then RSS;
%     textbook    POCS_VECTORIZED, 20 iterations, magnitude constraint,
%                 per coil then RSS;
%     homodyne_recon POCS: without the noise-adaptive step, with it (noise
%                 level estimated), with it given the true noise level;
%                 for 8 coils both combinations ('rss', 'adaptive').
%   With 8 coils the reference is the combination of the noiseless coils
%   (the object times the RSS of the sensitivities) and every result is
%   scaled by its best-fit global factor first. The 8-coil cases use smooth
%   Gaussian sensitivities, and on two slices the sensitivities of `bart
%   phantom -S 8` (realistic falloff), also with bart's own object (the
%   image of `bart phantom -s 8`). A thin line (2 samples across y)
%   with a phase of +0.5 rad gives the phase contrast kept by complex
%   output, with the defaults against 'NoiseAdaptive' false. Also the estimated noise
%   level against the true one, and the time of the coil combination and
%   the noise-adaptive step against reconstructing the coils alone
%   (256 x 256 x 64 x 8, the best of three calls each, taking turns; at
%   128 x 128 x 32 x 8 the call's fixed costs weigh more: 1.47x there in one
%   run). The goals are printed beside the ratios, all from this one run.
%
%   See also RUN_BENCHMARKS, COMPARE_POCS, POCS_VECTORIZED, BART_HOMODYNE.

  [volume, ~] = homodyne_phantom([256 256 64]);
  [small, ~] = homodyne_phantom([128 128 32]);
  objects = {volume(:, :, 33), volume(:, :, 41), small, small, ...
             textured_image(volume(:, :, 33), 7), textured_image(volume(:, :, 41), 8)};
  names = {'slice 33, ky 5/8', 'slice 41, ky 3/4 at +ky', '3-D 128x128x32, ky 5/8, kz 3/4', '3-D 128x128x32, kz 3/4', ...
           'textured slice 33, ky 5/8', 'textured slice 41, ky 3/4 at +ky'};
  ranges = {{[], [-32 127], []}, {[], [-128 63], []}, {[], [-16 63], [-8 15]}, {[], [], [-8 15]}, ...
            {[], [-32 127], []}, {[], [-128 63], []}};
  randn('seed', 17);

  single_rows = {};
  for o = 1:numel(objects)
    for snr = [20 50]
      single_rows(end + 1, :) = {names{o}, snr, single_coil_case(double(objects{o}), ranges{o}, snr)};
    end
  end
  coil_rows = {};
  for o = [1 2 5]
    for snr = [Inf 20 50]
      coil_rows(end + 1, :) = {names{o}, snr, coil_case(double(objects{o}), ranges{o}, snr, @gaussian_sensitivities)};
    end
  end
  for o = [1 2]
    for snr = [Inf 20 50]
      coil_rows(end + 1, :) = {[names{o} ', bart maps'], snr, ...
                               coil_case(double(objects{o}), ranges{o}, snr, @bart_sensitivities)};
    end
  end
  shepp_logan = double(bart('phantom -x 256'));
  for o = [1 2]
    for snr = [Inf 20]
      coil_rows(end + 1, :) = {['bart phantom -s 8, ' regexprep(names{o}, '^[^,]*, ', '')], snr, ...
                               coil_case(shepp_logan, ranges{o}, snr, @bart_sensitivities)};
    end
  end
  line_names = names([1 5]);
  lines = [phase_line_contrast(double(objects{1}), ranges{1}); phase_line_contrast(double(objects{5}), ranges{5})];
  [coil_seconds, combined_seconds] = combination_time();
  report = coils_markdown(single_rows, coil_rows, line_names, lines, coil_seconds, combined_seconds);
end

% The classic phase-corrected real part of fully sampled k-space: the phase
% of its centre under a Hann window spanning a quarter of every axis of 8
% samples or more. Coils along dimension 3 (k-space 2-D then) are combined
% with those windowed images.
function x = phase_corrected_real(k, coils)
  window = 1;
  for axis = 1:ndims(k) - coils
    n = size(k, axis);
    w = ones(n, 1);
    if n >= 8
      half = floor(n / 8);
      t = ((1:n)' - floor(n / 2) - 1) / half;
      w = (abs(t) < 1) .* (0.5 + 0.5 * cos(pi * t));
    end
    window = window .* reshape(w, [ones(1, axis - 1) n 1]);
  end
  if coils
    x = centred_idft(k, 1:2);
    l = centred_idft(k .* window, 1:2);
    x = real(sum(conj(l) .* x, 3)) ./ sqrt(sum(abs(l) .^ 2, 3));
  else
    x = centred_idft(k);
    x = real(x .* exp(-1i * angle(centred_idft(k .* window))));
  end
end

% Errors: floor, full through the same call, full phase-corrected real part,
% zero filled, bart, textbook, no step, step (estimated sigma), step (true
% sigma), then estimated / true sigma.
function e = single_coil_case(object, ranges, snr)
  n = numel(object);
  full = centred_dft(object);
  sd = mean(abs(object(abs(object) > 0.1 * max(abs(object(:)))))) / snr;
  sigma = sd * sqrt(n);   % per k-space sample
  noisy = full + sigma / sqrt(2) * complex(randn(size(full)), randn(size(full)));
  k = single(cut_to_ranges(noisy, ranges));
  reference = abs(object);
  err = @(x) norm(double(abs(x(:))) - reference(:)) / norm(reference(:));
  signed_err = @(x) norm(double(x(:)) - reference(:)) / norm(reference(:));
  [~, ~, ~, info] = homodyne_recon(k, 'Ranges', ranges);
  e = [err(centred_idft(noisy)), err(homodyne_recon(single(noisy), 'Output', 'magnitude')), ...
       signed_err(phase_corrected_real(noisy, false)), ...
       err(centred_idft(k)), err(bart_homodyne(k, ranges)), ...
       err(pocs_vectorized(k, ranges, 20, 'magnitude')), ...
       err(homodyne_recon(k, 'Ranges', ranges, 'NoiseAdaptive', false, 'Output', 'magnitude')), ...
       err(homodyne_recon(k, 'Ranges', ranges, 'Output', 'magnitude')), ...
       err(homodyne_recon(k, 'Ranges', ranges, 'Output', 'magnitude', 'NoiseCovariance', sigma ^ 2)), ...
       info.noise_sigma / sigma];
end

% Errors after a best-fit scale: floor, full through the same call, full
% phase-corrected real part, zero filled, bart + RSS, textbook + RSS, 'rss'
% without and with the step, 'adaptive' without the step, with it
% (estimated), with it (true sigma); then mean estimated / true sigma.
function e = coil_case(object, ranges, snr, sensitivities_of)
  sensitivities = sensitivities_of(size(object), 8);
  reference = sqrt(sum(abs(sensitivities) .^ 2, 3)) .* abs(object);
  images = sensitivities .* object;
  sd = mean(abs(images(abs(images) > 0.1 * max(abs(images(:)))))) / snr;
  sigma = sd * sqrt(numel(object));
  full = centred_dft(images, 1:2);   % coils along dimension 3
  noisy = full + sigma / sqrt(2) * complex(randn(size(full)), randn(size(full)));
  k = single(cut_to_ranges(noisy, ranges));
  err = @(x) fitted_error(x, reference);
  rss = @(x) sqrt(sum(abs(x) .^ 2, 3));
  [bart_coils, textbook] = deal(zeros(size(images)));
  for c = 1:8
    bart_coils(:, :, c) = bart_homodyne(k(:, :, c), ranges);
    textbook(:, :, c) = pocs_vectorized(k(:, :, c), ranges, 20, 'magnitude');
  end
  recon = @(varargin) homodyne_recon(k, 'Coils', 3, 'Ranges', ranges, 'Output', 'magnitude', varargin{:});
  [estimated, ~, ~, info] = recon();
  known = {};
  if isfinite(snr)
    known = {'NoiseCovariance', sigma ^ 2 * eye(8)};
  end
  e = [err(rss(centred_idft(noisy, 1:2))), ...
       err(homodyne_recon(single(noisy), 'Coils', 3, 'Output', 'magnitude')), ...
       signed_fitted_error(phase_corrected_real(noisy, true), reference), ...
       err(rss(centred_idft(k, 1:2))), err(rss(bart_coils)), err(rss(textbook)), ...
       err(recon('CoilCombine', 'rss', 'NoiseAdaptive', false)), err(recon('CoilCombine', 'rss')), ...
       err(recon('NoiseAdaptive', false)), err(estimated), err(recon(known{:})), NaN];
  if isfinite(snr)
    e(end) = mean(info.noise_sigma) / sigma;
  end
end

% Smooth coil sensitivities around the object, with phase.
function s = gaussian_sensitivities(n, coils)
  [x, y] = ndgrid(((1:n(1)) - n(1) / 2 - 1) / n(1), ((1:n(2)) - n(2) / 2 - 1) / n(2));
  s = zeros([n coils]);
  for c = 1:coils
    a = 2 * pi * c / coils;
    s(:, :, c) = exp(-2 * ((x - 0.6 * cos(a)) .^ 2 + (y - 0.6 * sin(a)) .^ 2)) .* exp(1i * (c + 2 * x - y));
  end
end

% The sensitivities of `bart phantom -S`, on a square image.
function s = bart_sensitivities(n, coils)
  s = reshape(double(bart(sprintf('phantom -S %d -x %d', coils, n(1)))), [n coils]);
end

function e = fitted_error(x, reference)
  e = signed_fitted_error(abs(x), reference);
end

function e = signed_fitted_error(x, reference)
  x = double(x(:));
  x = x * (x' * reference(:)) / (x' * x);
  e = norm(x - reference(:)) / norm(reference(:));
end

% The phase contrast of a line 2 samples across y with +0.5 rad inside the
% object, SNR 20, complex output: with the defaults and with 'NoiseAdaptive'
% false, each the mean phase of the line against the object 3 samples
% beside it.
function c = phase_line_contrast(object, ranges)
  rows = floor(size(object, 2) / 2) + (-7:-6);
  inside = abs(object(:, rows(1) - 3)) > 0.1 * max(abs(object(:)));
  object(:, rows) = object(:, rows) * exp(0.5i);
  sd = mean(abs(object(abs(object) > 0.1 * max(abs(object(:)))))) / 20;
  full = centred_dft(object);
  noisy = full + sd * sqrt(numel(object) / 2) * complex(randn(size(full)), randn(size(full)));
  k = single(cut_to_ranges(noisy, ranges));
  contrast = @(x) mean(angle(x(inside, rows(1)) .* conj(x(inside, rows(1) - 3))) + ...
                       angle(x(inside, rows(2)) .* conj(x(inside, rows(2) + 3)))) / 2;
  c = [contrast(double(homodyne_recon(k, 'Ranges', ranges, 'Output', 'complex'))), ...
       contrast(double(homodyne_recon(k, 'Ranges', ranges, 'Output', 'complex', 'NoiseAdaptive', false)))];
end

% Seconds of reconstructing 8 coils alone and with the combination and the
% noise-adaptive step (the defaults), the best of three calls each, taking
% turns so that both see the same machine load, on the size where the fixed
% costs of a call no longer hide the steps' own.
function [coils_alone, combined] = combination_time()
  [~, k] = homodyne_phantom([256 256 64]);
  k = repmat(single(k), [1 1 1 8]) .* reshape(single(exp(1i * (1:8))), [1 1 1 8]);
  k = k + single(0.02 * max(abs(k(:))) * complex(randn(size(k)), randn(size(k))));
  ranges = {[], [-32 127], []};
  k = cut_to_ranges(k, ranges);
  homodyne_recon(k, 'Coils', 4, 'Ranges', ranges);   % plans
  [coils_alone, combined] = deal(Inf);
  for r = 1:3
    started = tic;
    homodyne_recon(k, 'Ranges', ranges, 'NoiseAdaptive', false);   % the coils as volumes
    coils_alone = min(coils_alone, toc(started));
    started = tic;
    homodyne_recon(k, 'Coils', 4, 'Ranges', ranges);
    combined = min(combined, toc(started));
  end
end

function text = coils_markdown(single_rows, coil_rows, line_names, lines, coil_seconds, combined_seconds)
  lines_md = {'## Noisy partial Fourier, single coil and 8 coils', '', ...
           ['NRMSE of the magnitude against the noiseless fully sampled image; "floor": the fully sampled noisy ' ...
            'image (RSS of the coils); "full, same call": the fully sampled noisy k-space through the same ' ...
            'homodyne_recon call as the partial data (defaults, magnitude output); "full, real": the classic ' ...
            'phase-corrected real part of the fully sampled image (Hann-windowed centre, a quarter of every axis). ' ...
            '8 coils: every result scaled by its best-fit global factor first; "bart maps": the sensitivities ' ...
            'of `bart phantom -S 8` ("bart phantom -s 8": with bart''s own object too). textbook: vectorized ' ...
            'POCS, 20 iterations, magnitude constraint. step: the noise-adaptive step (every k-space sample ' ...
            'weighted by its SNR, measured ones by their own, synthesised ones by their measured partners'', ' ...
            'and for magnitude output the quadrature component by its own; est.: noise level estimated; true: ' ...
            'given).'], '', ...
           ['| single coil | SNR | floor | full, same call | full, real | zero filled | bart | textbook | ' ...
            'POCS, no step | step, est. | step, true | sigma est./true |'], ...
           '|---|---|---|---|---|---|---|---|---|---|---|---|'};
  for r = 1:size(single_rows, 1)
    e = single_rows{r, 3};
    lines_md{end + 1} = sprintf('| %s | %d | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.3f |', ...
                                single_rows{r, 1}, single_rows{r, 2}, e);
  end
  lines_md = [lines_md, {'', ['| 8 coils | SNR | floor | full, same call | full, real | zero filled | bart + RSS | ' ...
                              'textbook + RSS | rss, no step | rss, step | adaptive, no step | adaptive, step est. | ' ...
                              'adaptive, step true | sigma est./true |'], ...
                         '|---|---|---|---|---|---|---|---|---|---|---|---|---|---|'}];
  for r = 1:size(coil_rows, 1)
    e = coil_rows{r, 3};
    lines_md{end + 1} = sprintf(['| %s | %g | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | ' ...
                                 '%.4f | %.3f |'], coil_rows{r, 1}, coil_rows{r, 2}, e);
  end
  lines_md = [lines_md, {'', ['| phase line, +0.5 rad, SNR 20, complex output | defaults, rad | ' ...
                              '''NoiseAdaptive'' false, rad | ratio |'], '|---|---|---|---|'}];
  for r = 1:numel(line_names)
    lines_md{end + 1} = sprintf('| %s | %.4f | %.4f | %.3f |', line_names{r}, lines(r, :), lines(r, 1) / lines(r, 2));
  end
  s = cell2mat(single_rows(:, 3));
  snr20 = [single_rows{:, 2}] == 20;
  c = cell2mat(coil_rows(:, 3));
  snr = [coil_rows{:, 2}];
  noisy = isfinite(snr);
  sigma_ratios = [s(:, 10); c(noisy, 12)];
  goals = {
    'single coil noisy: partial / full through the same call, worst (goal >= 0.98)', ...
      sprintf('%.3f', min(s(:, 8) ./ s(:, 2)))
    '8 coils noisy: partial / full through the same call, worst (goal >= 0.98)', ...
      sprintf('%.3f', min(c(noisy, 10) ./ c(noisy, 2)))
    'single coil SNR 20: step / floor, median (goal <= 0.95)', sprintf('%.3f', median(s(snr20, 8) ./ s(snr20, 1)))
    'single coil SNR 20: full through the same call / floor, median', sprintf('%.3f', median(s(snr20, 2) ./ s(snr20, 1)))
    'single coil SNR 20: full phase-corrected real / floor, median', sprintf('%.3f', median(s(snr20, 3) ./ s(snr20, 1)))
    'phase line in complex output: defaults / ''NoiseAdaptive'' false, worst (goal >= 0.97)', ...
      sprintf('%.3f', min(lines(:, 1) ./ lines(:, 2)))
    '8 coils noiseless: adaptive / textbook + RSS, worst (goal <= 1.0)', sprintf('%.3f', max(c(~noisy, 10) ./ c(~noisy, 6)))
    '8 coils noiseless: adaptive / bart + RSS, worst (goal <= 0.8)', sprintf('%.3f', max(c(~noisy, 10) ./ c(~noisy, 5)))
    '8 coils SNR 20: adaptive / bart + RSS, worst (goal <= 0.8)', sprintf('%.3f', max(c(snr == 20, 10) ./ c(snr == 20, 5)))
    '8 coils SNR 20: adaptive / RSS floor, worst (goal <= 0.7)', sprintf('%.3f', max(c(snr == 20, 10) ./ c(snr == 20, 1)))
    'noise estimate / true, range (goal within 0.8 .. 1.2)', sprintf('%.3f .. %.3f', min(sigma_ratios), max(sigma_ratios))
    sprintf('time: 8 coils combined with the step / coils alone (%.2f s / %.2f s; goal <= 1.2)', combined_seconds, coil_seconds), ...
      sprintf('%.3f', combined_seconds / coil_seconds)
  };
  lines_md = [lines_md, {'', '| goal | ratio |', '|---|---|'}];
  for g = 1:size(goals, 1)
    lines_md{end + 1} = sprintf('| %s | %s |', goals{g, :});
  end
  text = [strjoin(lines_md, "\n"), "\n\n"];
end
