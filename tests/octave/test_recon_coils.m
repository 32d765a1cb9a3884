function cases = test_recon_coils()
%TEST_RECON_COILS  homodyne_recon with receive coils and noise, through the real MEX, in either MEX layout.
  cases = {
    'eight_coils_combine_to_the_object', @eight_coils_combine_to_the_object
    'batch_over_slices_equals_separate_calls', @batch_over_slices_equals_separate_calls
    'prewhitening_and_noise_level', @prewhitening_and_noise_level
    'noise_treatment_of_full_and_partial_data', @noise_treatment_of_full_and_partial_data
    'refusals_leave_no_result', @refusals_leave_no_result
  };
end

% An object seen by 8 coils of known smooth sensitivities, k-space 2-D with
% the coils along dimension 3 and ky 5/8 sampled.
function [k, expected, full] = coil_phantom(n, coils)
  [truth, ~] = homodyne_phantom([n 1]);
  [x, y] = ndgrid(((1:n(1)) - n(1) / 2 - 1) / n(1), ((1:n(2)) - n(2) / 2 - 1) / n(2));
  object = double(truth) .* exp(1i * (2 * x + y));
  sensitivities = zeros([n coils]);
  for c = 1:coils
    a = 2 * pi * c / coils;
    sensitivities(:, :, c) = exp(-2 * ((x - 0.6 * cos(a)) .^ 2 + (y - 0.6 * sin(a)) .^ 2)) .* exp(1i * (c + 3 * x * c / coils));
  end
  expected = sqrt(sum(abs(sensitivities) .^ 2, 3)) .* object;
  full = fftshift(fftshift(fft2(ifftshift(ifftshift(sensitivities .* object, 1), 2)), 1), 2);
  k = full;
  k(:, 1:round(3 * n(2) / 8), :) = 0;
end

% Error after the best-fit global complex scale.
function e = scaled_error(estimate, reference)
  estimate = double(estimate(:));
  e = norm(estimate * (estimate \ reference(:)) - reference(:)) / norm(reference(:));
end

function eight_coils_combine_to_the_object(~)
  [k, expected, full] = coil_phantom([64 64], 8);
  % The combination keeps the reference coil's phase: compare magnitudes.
  % Fully sampled, the noise treatment takes the sensitivities from the
  % coils' windowed centres, without it from the whole images.
  plain_full = homodyne_recon(full, 'Coils', 3, 'Output', 'magnitude', 'NoiseAdaptive', false);
  assert(scaled_error(plain_full, abs(expected)) < 1e-3);
  assert(scaled_error(homodyne_recon(full, 'Coils', 3, 'Output', 'magnitude'), abs(expected)) < 5e-3);
  [img, ~, zero_filled, info, sensitivities] = homodyne_recon(k, 'Coils', 3, 'Output', 'complex');
  assert(isequal(size(img), [64 64]) && isequal(size(sensitivities), [64 64 8]));
  assert(strcmp(info.combination, 'adaptive') && strcmp(info.adaptive.applied_to, 'none'));   % complex: as measured
  assert(scaled_error(abs(img), abs(expected)) < 0.2 * scaled_error(zero_filled, abs(expected)));
  power = sum(abs(sensitivities) .^ 2, 3);
  assert(all(abs(power(:) - 1) < 1e-4 | power(:) == 0), 'sensitivity power %g', max(abs(power(:) - 1)));   % unit length or none
  % Noiseless: the adaptive step leaves the result within 1 %; RSS gives the magnitude.
  [magnitude, ~, ~, info] = homodyne_recon(k, 'Coils', 3, 'Output', 'magnitude');
  assert(strcmp(info.adaptive.applied_to, 'combined image'));
  plain = homodyne_recon(k, 'Coils', 3, 'Output', 'magnitude', 'NoiseAdaptive', false);
  assert(norm(magnitude(:) - plain(:)) < 0.01 * norm(plain(:)));
  rss = homodyne_recon(k, 'Coils', 3, 'CoilCombine', 'rss', 'Output', 'magnitude');
  assert(scaled_error(rss, abs(expected)) < 0.2 * scaled_error(zero_filled, abs(expected)));
end

% Slices along 4 and the coils along 3 of 2-D data; the same data as 3-D
% volumes of one plane with the coils along 4.
function batch_over_slices_equals_separate_calls(~)
  k = coil_phantom([32 24], 4);
  stack = cat(4, k, 2 * k(:, :, [2 3 4 1]));
  batch = homodyne_recon(stack, 'Coils', 3, 'Threads', 2);
  assert(isequal(size(batch), [32 24 1 2]));
  for s = 1:2
    assert(isequal(batch(:, :, 1, s), homodyne_recon(stack(:, :, :, s), 'Coils', 3, 'Threads', 1)), 'slice %d', s);
  end
  as_3d = homodyne_recon(permute(stack, [1 2 5 3 4]), 'Coils', 4);
  assert(isequal(size(as_3d), [32 24 1 1 2]) && isequal(as_3d(:), batch(:)));
end

function prewhitening_and_noise_level(~)
  randn('seed', 3);
  [k, expected] = coil_phantom([64 64], 4);
  plain = homodyne_recon(k, 'Coils', 3, 'NoiseAdaptive', false);
  assert(isequal(plain, homodyne_recon(k, 'Coils', 3, 'NoiseAdaptive', false, 'NoiseCovariance', eye(4))));
  % Known noise: reported from the covariance, estimated within 15 %, the
  % same from a noise scan; the scale of the data does not matter.
  sigma = 0.2 * mean(abs(k(k ~= 0)));
  noisy = k + (k ~= 0) .* sigma / sqrt(2) .* complex(randn(size(k)), randn(size(k)));
  [~, ~, ~, given] = homodyne_recon(1e6 * noisy, 'Coils', 3, 'NoiseCovariance', 1e12 * sigma ^ 2 * eye(4));
  assert(strcmp(given.noise_source, 'covariance') && max(abs(given.noise_sigma / 1e6 - sigma)) < 1e-5 * sigma);
  [img, ~, ~, estimated] = homodyne_recon(noisy, 'Coils', 3);
  assert(strcmp(estimated.noise_source, 'estimated') && all(abs(estimated.noise_sigma / sigma - 1) < 0.15), ...
         'estimated %s, true %g', mat2str(estimated.noise_sigma, 3), sigma);
  scan = sigma / sqrt(2) * complex(randn(64, 64, 4), randn(64, 64, 4));
  [~, ~, ~, scanned] = homodyne_recon(noisy, 'Coils', 3, 'NoiseCovariance', scan);
  assert(strcmp(scanned.noise_source, 'noise scan') && all(abs(scanned.noise_sigma / sigma - 1) < 0.05));
  assert(scaled_error(img, abs(expected)) < scaled_error(plain, abs(expected)) + 0.5);   % and it runs
  % Single coil: a 1x1 covariance is the noise power.
  [~, ~, ~, single_coil] = homodyne_recon(noisy(:, :, 1), 'NoiseCovariance', sigma ^ 2);
  assert(abs(single_coil.noise_sigma - sigma) < 1e-6 * sigma && strcmp(single_coil.adaptive.applied_to, 'each coil image'));
end

% One noisy smooth slice (SNR 20), the noise level estimated: ky 5/8 through
% the defaults is no cleaner than the fully sampled k-space through the same
% call, whose noise level is reported too; complex output keeps the phase of
% a line 2 samples across y (+0.5 rad) as 'NoiseAdaptive' false does.
function noise_treatment_of_full_and_partial_data(~)
  randn('seed', 11);
  [volume, ~] = homodyne_phantom([128 128 8]);
  object = textured_image(double(volume(:, :, 5)), 3);
  rows = 58:59;
  inside = abs(object(:, rows(1) - 3)) > 0.1 * max(abs(object(:))) & abs(object(:, rows(2) + 3)) > 0;
  object(:, rows) = object(:, rows) * exp(0.5i);
  sd = mean(abs(object(abs(object) > 0.1 * max(abs(object(:)))))) / 20;
  full = centred_dft(object) + sd * 128 / sqrt(2) * complex(randn(128), randn(128));
  ranges = {[], [-16 63]};
  partial = single(full);
  partial(:, 1:48) = 0;   % ky -64 .. -17 not acquired
  err = @(x) norm(double(x(:)) - abs(object(:))) / norm(object(:));
  [from_full, ~, ~, info] = homodyne_recon(single(full), 'Output', 'magnitude');
  from_partial = homodyne_recon(partial, 'Ranges', ranges, 'Output', 'magnitude');
  assert(err(from_partial) >= 0.98 * err(from_full), 'partial %.4f, full %.4f', err(from_partial), err(from_full));
  assert(strcmp(info.noise_source, 'estimated') && abs(info.noise_sigma / (sd * 128) - 1) < 0.1);
  contrast = @(x) mean(angle(x(inside, rows(1)) .* conj(x(inside, rows(1) - 3))) + ...
                       angle(x(inside, rows(2)) .* conj(x(inside, rows(2) + 3)))) / 2;
  kept = contrast(homodyne_recon(partial, 'Ranges', ranges, 'Output', 'complex'));
  plain = contrast(homodyne_recon(partial, 'Ranges', ranges, 'Output', 'complex', 'NoiseAdaptive', false));
  assert(plain > 0.1 && kept >= 0.97 * plain, 'contrast %.3f against %.3f', kept, plain);
end

function refusals_leave_no_result(~)
  k = coil_phantom([16 12], 3);
  dead = k;
  dead(:, :, 2) = 0;
  table = {
    'homodyne:badOption', '''Coils'' must be the dimension that holds the receive coils', {'Coils', 2.5}
    'homodyne:badOption', '''Coils'' must be a whole number from 3 to the number of dimensions of KSPACE, 3', {'Coils', 4}
    'homodyne:badOption', '''Coils'', 3 lies among the 3 spatial dimensions', {'Coils', 3, 'Dims', 3}
    'homodyne:badOption', '''CoilCombine'' must be ''adaptive'', ''rss'' or ''none''', {'Coils', 3, 'CoilCombine', 'sum'}
    'homodyne:badOption', '''NoiseAdaptive'' must be true or false', {'NoiseAdaptive', 2}
    'homodyne:badInput', 'NoiseCovariance must be 3-by-3', {'Coils', 3, 'NoiseCovariance', eye(2)}
    'homodyne:badInput', 'must be Hermitian', {'Coils', 3, 'NoiseCovariance', [1 1i 0; 1i 1 0; 0 0 1]}
    'homodyne:badInput', 'must be positive definite', {'Coils', 3, 'NoiseCovariance', [1 2 0; 2 1 0; 0 0 1]}
    'homodyne:badInput', 'has 2 coils; the k-space has 3', {'Coils', 3, 'NoiseCovariance', ones(4, 4, 2)}
  };
  for t = 1:size(table, 1)
    [img, err] = deal([]);
    try
      img = homodyne_recon(k, table{t, 3}{:});
    catch err
    end
    assert(isempty(img) && ~isempty(err), 'row %d accepted', t);
    assert(strcmp(err.identifier, table{t, 1}) && ~isempty(strfind(err.message, table{t, 2})), ...
           'row %d: %s: %s', t, err.identifier, err.message);
  end
  try
    homodyne_recon(dead, 'Coils', 3);
    error('a coil without calibration signal was accepted');
  catch err
    assert(strcmp(err.identifier, 'homodyne:sampling') && ~isempty(strfind(err.message, 'Coil 2 has no signal')), err.message);
  end
  assert(all(isfinite(homodyne_recon(dead, 'Coils', 3, 'CoilCombine', 'rss')(:))));
end
