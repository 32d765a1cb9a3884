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
%     zero filled (RSS of the coils);
%     bart        `bart homodyne`, per coil then RSS;
%     textbook    POCS_VECTORIZED, 20 iterations, magnitude constraint,
%                 per coil then RSS;
%     homodyne_recon POCS: without the noise-adaptive step, with it (noise
%                 level estimated), with it given the true noise level;
%                 for 8 coils both combinations ('rss', 'adaptive').
%   With 8 coils the reference is the combination of the noiseless coils
%   (the object times the RSS of the sensitivities) and every result is
%   scaled by its best-fit global factor first. Also the estimated noise
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
      coil_rows(end + 1, :) = {names{o}, snr, coil_case(double(objects{o}), ranges{o}, snr)};
    end
  end
  [coil_seconds, combined_seconds] = combination_time();
  report = coils_markdown(single_rows, coil_rows, coil_seconds, combined_seconds);
end

% Errors: floor, zero filled, bart, textbook, no step, step (estimated
% sigma), step (true sigma), then estimated / true sigma.
function e = single_coil_case(object, ranges, snr)
  n = numel(object);
  full = centred_dft(object);
  sd = mean(abs(object(abs(object) > 0.1 * max(abs(object(:)))))) / snr;
  sigma = sd * sqrt(n);   % per k-space sample
  noisy = full + sigma / sqrt(2) * complex(randn(size(full)), randn(size(full)));
  k = single(cut_to_ranges(noisy, ranges));
  reference = abs(object);
  err = @(x) norm(double(abs(x(:))) - reference(:)) / norm(reference(:));
  [~, ~, ~, info] = homodyne_recon(k, 'Ranges', ranges);
  e = [err(centred_idft(noisy)), err(centred_idft(k)), err(bart_homodyne(k, ranges)), ...
       err(pocs_vectorized(k, ranges, 20, 'magnitude')), ...
       err(homodyne_recon(k, 'Ranges', ranges, 'NoiseAdaptive', false, 'Output', 'magnitude')), ...
       err(homodyne_recon(k, 'Ranges', ranges, 'Output', 'magnitude')), ...
       err(homodyne_recon(k, 'Ranges', ranges, 'Output', 'magnitude', 'NoiseCovariance', sigma ^ 2)), ...
       info.noise_sigma / sigma];
end

% Errors after a best-fit scale: floor, zero filled, bart + RSS, textbook +
% RSS, 'rss' without and with the step, 'adaptive' without the step, with
% it (estimated), with it (true sigma); then mean estimated / true sigma.
function e = coil_case(object, ranges, snr)
  [sensitivities, reference] = coil_sensitivities(object, 8);
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
  e = [err(rss(centred_idft(noisy, 1:2))), err(rss(centred_idft(k, 1:2))), err(rss(bart_coils)), err(rss(textbook)), ...
       err(recon('CoilCombine', 'rss', 'NoiseAdaptive', false)), err(recon('CoilCombine', 'rss')), ...
       err(recon('NoiseAdaptive', false)), err(estimated), err(recon(known{:})), NaN];
  if isfinite(snr)
    e(end) = mean(info.noise_sigma) / sigma;
  end
end

% Smooth coil sensitivities around the object, with phase; the reference
% is the object times their root sum of squares.
function [s, reference] = coil_sensitivities(object, coils)
  n = size(object);
  [x, y] = ndgrid(((1:n(1)) - n(1) / 2 - 1) / n(1), ((1:n(2)) - n(2) / 2 - 1) / n(2));
  s = zeros([n coils]);
  for c = 1:coils
    a = 2 * pi * c / coils;
    s(:, :, c) = exp(-2 * ((x - 0.6 * cos(a)) .^ 2 + (y - 0.6 * sin(a)) .^ 2)) .* exp(1i * (c + 2 * x - y));
  end
  reference = sqrt(sum(abs(s) .^ 2, 3)) .* abs(object);
end

function e = fitted_error(x, reference)
  x = double(abs(x(:)));
  x = x * (x' * reference(:)) / (x' * x);
  e = norm(x - reference(:)) / norm(reference(:));
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

function text = coils_markdown(single_rows, coil_rows, coil_seconds, combined_seconds)
  lines = {'## Noisy partial Fourier, single coil and 8 coils', '', ...
           ['NRMSE of the magnitude against the noiseless fully sampled image; "floor": the fully sampled noisy ' ...
            'image (RSS of the coils). 8 coils: every result scaled by its best-fit global factor first. ' ...
            'textbook: vectorized POCS, 20 iterations, magnitude constraint. step: the noise-adaptive ' ...
            'step (synthesised samples and the quadrature component weighted by their SNR; est.: noise level ' ...
            'estimated; true: given).'], '', ...
           '| single coil | SNR | floor | zero filled | bart | textbook | POCS, no step | step, est. | step, true | sigma est./true |', ...
           '|---|---|---|---|---|---|---|---|---|---|'};
  for r = 1:size(single_rows, 1)
    e = single_rows{r, 3};
    lines{end + 1} = sprintf('| %s | %d | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.3f |', ...
                             single_rows{r, 1}, single_rows{r, 2}, e);
  end
  lines = [lines, {'', ['| 8 coils | SNR | floor | zero filled | bart + RSS | textbook + RSS | rss, no step | rss, step | ' ...
                        'adaptive, no step | adaptive, step est. | adaptive, step true | sigma est./true |'], ...
                   '|---|---|---|---|---|---|---|---|---|---|---|---|'}];
  for r = 1:size(coil_rows, 1)
    e = coil_rows{r, 3};
    lines{end + 1} = sprintf('| %s | %g | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.4f | %.3f |', ...
                             coil_rows{r, 1}, coil_rows{r, 2}, e);
  end
  s = cell2mat(single_rows(:, 3));
  snr20 = [single_rows{:, 2}] == 20;
  c = cell2mat(coil_rows(:, 3));
  snr = [coil_rows{:, 2}];
  sigma_ratios = [s(:, 8); c(isfinite(snr), 10)];
  goals = {
    'single coil SNR 20: step / floor, median (goal <= 0.97)', sprintf('%.3f', median(s(snr20, 6) ./ s(snr20, 1)))
    'single coil SNR 20: step / floor, worst (goal < 1)', sprintf('%.3f', max(s(snr20, 6) ./ s(snr20, 1)))
    'single coil noisy: step / better of zero filled and textbook, worst (goal <= 1.03)', ...
      sprintf('%.3f', max(s(:, 6) ./ min(s(:, 2), s(:, 4))))
    '8 coils noiseless: adaptive / bart + RSS, worst (goal <= 0.8)', sprintf('%.3f', max(c(~isfinite(snr), 8) ./ c(~isfinite(snr), 3)))
    '8 coils SNR 20: adaptive / bart + RSS, worst (goal <= 0.8)', sprintf('%.3f', max(c(snr == 20, 8) ./ c(snr == 20, 3)))
    '8 coils SNR 20: adaptive / RSS floor, worst (goal <= 0.7)', sprintf('%.3f', max(c(snr == 20, 8) ./ c(snr == 20, 1)))
    'noise estimate / true, range (goal within 0.8 .. 1.2)', sprintf('%.3f .. %.3f', min(sigma_ratios), max(sigma_ratios))
    sprintf('time: 8 coils combined with the step / coils alone (%.2f s / %.2f s; goal <= 1.2)', combined_seconds, coil_seconds), ...
      sprintf('%.3f', combined_seconds / coil_seconds)
  };
  lines = [lines, {'', '| goal | ratio |', '|---|---|'}];
  for g = 1:size(goals, 1)
    lines{end + 1} = sprintf('| %s | %s |', goals{g, :});
  end
  text = [strjoin(lines, "\n"), "\n\n"];
end
