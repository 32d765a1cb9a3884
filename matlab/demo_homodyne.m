function demo_homodyne(png_file)
%DEMO_HOMODYNE  Homodyne reconstruction of partial-Fourier phantoms: errors, times, picture.
%
%   DEMO_HOMODYNE builds a 256 x 256 x 64 head-like phantom with a smooth
%   phase (HOMODYNE_PHANTOM), takes its centred k-space in single precision
%   and reconstructs two partial-Fourier acquisitions of it with
%   HOMODYNE_RECON, the sampled ranges detected from the data:
%     1. 5/8 of the ky lines, the missing 3/8 at the negative end;
%     2. 5/8 of the ky lines missing at the positive end (the axis is
%        mirrored on the way through) and 3/4 of the kz planes.
%   For each case it prints the NRMSE of the magnitude against the fully
%   sampled reference, ||abs(recon) - reference|| / ||reference|| over the
%   whole volume, for zero filling and for homodyne reconstruction, and the
%   time of every step. It writes a montage of the central axial slice:
%   one row per case; columns reference, zero filled, homodyne, and the
%   ten-fold absolute error of zero filling and of homodyne, all on the
%   grey scale of the reference.
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

  fprintf('%-24s %12s %12s | %s\n', '', 'NRMSE', 'NRMSE', 'homodyne_recon steps, ms');
  fprintf('%-24s %12s %12s | %7s %7s %7s %8s %7s\n', 'case', 'zero filled', 'homodyne', ...
          'ranges', 'filter', 'FFTs', 'multiply', 'total');
  rows = cell(1, numel(cases));
  centre = floor(sizes(3) / 2) + 1;
  for c = 1:numel(cases)
    [img, ~, zero_filled, info] = homodyne_recon(cases(c).kspace);
    t = info.seconds;
    steps = 1000 * [t.ranges, t.filter, t.fft, t.multiply];
    fprintf('%-24s %12.4f %12.4f | %7.0f %7.0f %7.0f %8.0f %7.0f\n', cases(c).name, ...
            nrmse(zero_filled, reference), nrmse(img, reference), steps, sum(steps));
    rows{c} = montage_row(reference(:, :, centre), zero_filled(:, :, centre), img(:, :, centre));
  end

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
  fprintf('  rows: the cases above; columns: reference, zero filled, homodyne,\n');
  fprintf('  10 x |zero filled - reference|, 10 x |homodyne - reference| (central axial slice)\n');
  fprintf('Total demo time: %.1f s\n', toc(started));
end

function e = nrmse(estimate, reference)
  e = norm(double(abs(estimate(:))) - double(reference(:))) / norm(double(reference(:)));
end

% One row of panels, +y up and x to the right, on the reference's grey
% scale (0 to 1), with grey bars between them.
function row = montage_row(reference, zero_filled, homodyne)
  scale = max(reference(:));
  panels = {reference, abs(zero_filled), abs(homodyne), ...
            10 * abs(abs(zero_filled) - reference), 10 * abs(abs(homodyne) - reference)};
  bar = 0.5 * ones(size(reference, 2), 4);
  row = bar;
  for p = 1:numel(panels)
    panel = flipud(min(max(double(panels{p}) / scale, 0), 1).');
    row = [row, panel, bar];
  end
end
