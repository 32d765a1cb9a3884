function demo_homodyne(png_file)
%DEMO_HOMODYNE  Partial-Fourier reconstruction of phantoms: errors, times, picture.
%
%   DEMO_HOMODYNE builds a 256 x 256 x 64 head-like phantom with a smooth
%   phase (HOMODYNE_PHANTOM), takes its centred k-space in single precision
%   and reconstructs two partial-Fourier acquisitions of it with
%   HOMODYNE_RECON, the sampled ranges detected from the data:
%     1. 5/8 of the ky lines, the missing 3/8 at the negative end;
%     2. 5/8 of the ky lines missing at the positive end and 3/4 of the kz
%        planes.
%   For each case it prints the NRMSE of the magnitude against the fully
%   sampled reference, ||abs(recon) - reference|| / ||reference|| over the
%   whole volume, for zero filling, one-pass homodyne ('Method',
%   'homodyne') and POCS (the default method), the time of every one-pass
%   step, and POCS's iterations and time. It writes a montage of the central
%   axial slice: one row per case, labelled; columns reference, zero filled,
%   one-pass homodyne, POCS, and the ten-fold absolute error of the three,
%   all on the grey scale of the reference, each panel labelled with its
%   method and NRMSE. A last case puts the central slice (256 x 256, 2-D)
%   behind 8 coils of smooth known sensitivities with complex Gaussian noise
%   at SNR 20 (sd = mean object intensity / 20 per coil image), ky 5/8, and
%   compares zero filling (RSS), the RSS of per-coil POCS ('CoilCombine',
%   'rss') and the default: per-coil POCS, adaptive combination and
%   the noise-adaptive step, against the noiseless fully sampled
%   combination, after a best-fit global scale; the table adds the floor,
%   the RSS of the fully sampled noisy coils.
%
%   DEMO_HOMODYNE(PNG_FILE) writes the montage to PNG_FILE instead of
%   out/homodyne_demo.png below the current folder.
%
%   Needs the built module (BUILD_HOMODYNE_MEX); runs headless.
%
%   Example:
%     demo_homodyne(fullfile(tempdir, 'homodyne_demo.png'));
%
%   See also HOMODYNE_RECON, HOMODYNE_PHANTOM.

  if nargin < 1
    png_file = fullfile(pwd, 'out', 'homodyne_demo.png');
  end
  sizes = [256 256 64];
  started = tic;
  [image, full] = homodyne_phantom(sizes);
  reference = abs(image);
  fprintf('Homodyne partial-Fourier demo: %d x %d x %d phantom, complex single k-space (%.0f ms to build)\n\n', ...
          sizes, 1000 * toc(started));

  missing_y = sizes(2) * 3 / 8;
  missing_z = sizes(3) / 4;
  cases = struct('name', {'ky 5/8, missing at -ky', 'ky 5/8 at +ky, kz 3/4'}, 'kspace', {full, full});
  cases(1).kspace(:, 1:missing_y, :) = 0;
  cases(2).kspace(:, end - missing_y + 1:end, :) = 0;
  cases(2).kspace(:, :, 1:missing_z) = 0;

  fprintf('%-24s %12s %12s %12s | %9s | %s\n', '', 'NRMSE', 'NRMSE', 'NRMSE', 'one-pass', 'POCS');
  fprintf('%-24s %12s %12s %12s | %9s | %6s %7s\n', 'case', 'zero filled', 'one-pass', 'POCS', 'ms', 'iters', 'ms');  % iters: the most of a block
  rows = cell(1, numel(cases));
  centre = floor(sizes(3) / 2) + 1;
  for c = 1:numel(cases)
    step = tic;
    [img, ~, zero_filled] = homodyne_recon(cases(c).kspace, 'Method', 'homodyne');
    one_pass_ms = 1000 * toc(step);
    step = tic;
    [pocs, ~, ~, pocs_info] = homodyne_recon(cases(c).kspace);
    pocs_ms = 1000 * toc(step);
    errors = [nrmse(zero_filled, reference), nrmse(img, reference), nrmse(pocs, reference)];
    fprintf('%-24s %12.4f %12.4f %12.4f | %9.0f | %6d %7.0f\n', cases(c).name, errors, one_pass_ms, ...
            pocs_info.iterations(3), pocs_ms);
    slices = {reference(:, :, centre), zero_filled(:, :, centre), img(:, :, centre), pocs(:, :, centre)};
    rows{c} = montage_row(cases(c).name, slices, errors, {'zero filled', 'one-pass', 'POCS'});
  end

  [rows{end + 1}, coil_errors, coil_ms] = coil_case(image(:, :, centre));
  fprintf('\n%-24s %12s %12s %12s %12s | %s\n', '8 coils, SNR 20', 'zero filled', 'per-coil RSS', 'combined', ...
          'RSS floor', 'ms');
  fprintf('%-24s %12.4f %12.4f %12.4f %12.4f | %5.0f  (ky 5/8, 256 x 256, NRMSE after a best-fit scale)\n', ...
          'central slice', coil_errors, coil_ms);

  folder = fileparts(png_file);
  if ~isempty(folder) && ~exist(folder, 'dir')
    mkdir(folder);
  end
  bar = 0.5 * ones(4, size(rows{1}, 2));
  picture = bar;
  for c = 1:numel(rows)
    picture = [picture; rows{c}; bar];
  end
  imwrite(uint8(round(255 * picture)), png_file);
  fprintf('\nPicture: %s\n', png_file);
  fprintf('  rows: the cases above; columns: reference, zero filled, one-pass homodyne, POCS,\n');
  fprintf('  10 x |error| of zero filled, one-pass and POCS (central axial slice), each labelled;\n');
  fprintf('  last row: 8 coils at SNR 20, reference (combined fully sampled), zero filled (RSS),\n');
  fprintf('  RSS of per-coil POCS, the adaptive combination with the noise-adaptive step, their errors\n');
  fprintf('Total demo time: %.1f s\n', toc(started));
end

function e = nrmse(estimate, reference)
  e = norm(double(abs(estimate(:))) - double(reference(:))) / norm(double(reference(:)));
end

% One row of panels, +y up and x to the right, on the reference's grey
% scale (0 to 1), with grey bars between them, a label above each panel and
% the case's name above the row.
function row = montage_row(name, slices, errors, methods)
  [reference, recons] = deal(slices{1}, slices(2:end));
  scale = max(reference(:));
  panels = {reference};
  labels = {'reference'};
  for m = 1:3
    panels{end + 1} = abs(recons{m});
    labels{end + 1} = sprintf('%s %.4f', methods{m}, errors(m));
  end
  for m = 1:3
    panels{end + 1} = 10 * abs(abs(recons{m}) - reference);
    labels{end + 1} = sprintf('10x err, %s', methods{m});
  end
  width = size(reference, 1);
  bar = 0.5 * ones(size(reference, 2) + 20, 4);
  row = bar;
  for p = 1:numel(panels)
    panel = flipud(min(max(double(panels{p}) / scale, 0), 1).');
    row = [row, [label_strip(labels{p}, width); panel], bar];
  end
  row = [label_strip(['case: ' name], size(row, 2)); row];
end

% White text on black, 20 pixels high, as wide as WIDTH: twice the font's
% size where the text fits, else its own size.
function strip = label_strip(text, width)
  strip = zeros(20, width);
  text_scale = 2;
  if 12 * numel(text) + 8 > width
    text_scale = 1;
  end
  bitmap = text_bitmap(text, text_scale);
  bitmap = bitmap(:, 1:min(end, width - 4));
  top = floor((20 - size(bitmap, 1)) / 2) + 1;
  strip(top:top + size(bitmap, 1) - 1, 4 + (1:size(bitmap, 2))) = bitmap;
end

% 8 coils with noise: the central slice behind smooth coil sensitivities.
% Returns the montage row, the NRMSE of zero filling, per-coil RSS, the
% combined reconstruction and the floor, and the combined call's time.
function [row, errors, ms] = coil_case(slice)
  n = size(slice);
  coils = 8;
  [x, y] = ndgrid(((1:n(1)) - n(1) / 2 - 1) / n(1), ((1:n(2)) - n(2) / 2 - 1) / n(2));
  sensitivities = zeros([n coils]);
  for c = 1:coils
    a = 2 * pi * c / coils;
    sensitivities(:, :, c) = exp(-2 * ((x - 0.6 * cos(a)) .^ 2 + (y - 0.6 * sin(a)) .^ 2)) .* exp(1i * (c + 2 * x));
  end
  coil_images = sensitivities .* double(slice);
  randn('seed', 20);
  sd = mean(abs(coil_images(abs(slice) > 0.1 * max(abs(slice(:)))))) / 20;
  noisy = coil_images + sd / sqrt(2) * complex(randn(size(coil_images)), randn(size(coil_images)));
  full = fftshift(fftshift(fft2(ifftshift(ifftshift(noisy, 1), 2)), 1), 2);
  k = full;
  k(:, 1:n(2) * 3 / 8, :) = 0;
  reference = sqrt(sum(abs(sensitivities) .^ 2, 3)) .* abs(double(slice));
  floor_image = sqrt(sum(abs(noisy) .^ 2, 3));
  [~, ~, zero_filled] = homodyne_recon(k, 'Coils', 3, 'Output', 'magnitude');
  per_coil_rss = homodyne_recon(k, 'Coils', 3, 'CoilCombine', 'rss', 'Output', 'magnitude');
  step = tic;
  combined = homodyne_recon(k, 'Coils', 3, 'Output', 'magnitude');
  ms = 1000 * toc(step);
  recons = {fitted(zero_filled, reference), fitted(per_coil_rss, reference), fitted(combined, reference)};
  errors = [cellfun(@(r) nrmse(r, reference), recons), nrmse(fitted(floor_image, reference), reference)];
  row = montage_row('8 coils, SNR 20, ky 5/8', [{reference}, recons], errors(1:3), ...
                    {'zero filled', 'coil RSS', 'combined'});
end

% ESTIMATE scaled by the factor that fits it best to REFERENCE (least squares).
function e = fitted(estimate, reference)
  e = double(abs(estimate));
  e = e * (e(:)' * reference(:)) / (e(:)' * e(:));
end
