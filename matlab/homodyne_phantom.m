function [image, kspace] = homodyne_phantom(sizes, varargin)
%HOMODYNE_PHANTOM  A 3-D head-like test object with a smooth phase, and its k-space.
%
%   [IMAGE, KSPACE] = HOMODYNE_PHANTOM(SIZES)
%     SIZES is [nx ny nz] (or [nx ny] for a single slice). The object is a
%     set of ellipsoids in the cube [-1, 1]^3 in the manner of the classic
%     head phantom: skull, brain, ventricles and small lesions, most of them
%     cut by the central axial slice. It carries a smooth phase (a linear
%     ramp, a gentle quadratic term and a broad bump, a few radians in all)
%     of the kind that homodyne reconstruction assumes.
%
%     IMAGE is the complex single-precision object; abs(IMAGE) is the
%     magnitude that a fully sampled reconstruction gives back.
%     KSPACE is its centred 3-D DFT (single): k = 0 at index floor(n/2)+1 of
%     every axis, the convention of HOMODYNE_RECON and HOMODYNE_MEX, so that
%     abs(fftshift(ifftn(ifftshift(KSPACE)))) equals abs(IMAGE).
%
%   Example:
%     [img, k] = homodyne_phantom([128 128 32]);
%     k(:, 1:40, :) = 0;                      % ky = -64 .. -25 not acquired
%     recon = homodyne_recon(k);
%
%   See also HOMODYNE_RECON.

  wrapper = 'homodyne_phantom';
  if nargin ~= 1
    homodyne_error(wrapper, 'usage', 'usage: [IMAGE, KSPACE] = homodyne_phantom(SIZES); see help homodyne_phantom.');
  end
  try
    if ~isnumeric(sizes) || ~isreal(sizes) || ~any(numel(sizes) == [2 3]) || any(~isfinite(sizes(:))) ...
       || any(sizes(:) < 1) || any(sizes(:) ~= round(sizes(:)))
      homodyne_error(wrapper, 'badInput', 'SIZES must be [nx ny] or [nx ny nz] of positive whole numbers.');
    end
    sizes = [double(full(sizes(:)')), 1];
    sizes = sizes(1:3);
    if prod(sizes) >= 2^31
      homodyne_error(wrapper, 'badInput', 'SIZES %s give 2^31 or more samples.', mat2str(sizes));
    end
    [image, kspace] = make_phantom(sizes, nargout);
  catch err
    homodyne_error(wrapper, err);
  end
end

% The object of SIZES [nx ny nz] and, when OUTPUTS > 1, its centred k-space.
function [image, kspace] = make_phantom(sizes, outputs)
  x = axis_coordinates(sizes(1));
  y = reshape(axis_coordinates(sizes(2)), 1, []);
  z = reshape(axis_coordinates(sizes(3)), 1, 1, []);

  % centre (x y z), semi-axes (x y z), rotation about z in degrees, intensity
  ellipsoids = [
     0.00  0.00  0.00   0.69  0.92  0.81     0   1.00   % skull
     0.00 -0.02  0.00   0.66  0.87  0.78     0  -0.75   % brain
    -0.22  0.00  0.00   0.41  0.16  0.21   108  -0.15   % ventricles
     0.22  0.00  0.00   0.31  0.11  0.22    72  -0.15
     0.00  0.35  0.00   0.21  0.25  0.41     0   0.10
     0.00  0.10  0.00   0.05  0.05  0.05     0   0.20   % small lesions
    -0.08 -0.60  0.00   0.05  0.03  0.05     0   0.20
     0.06 -0.60  0.00   0.05  0.03  0.05    90   0.20
     0.06 -0.11  0.35   0.06  0.04  0.10    90   0.10
     0.00  0.10  0.35   0.06  0.06  0.10     0  -0.10
  ];
  magnitude = zeros(sizes, 'single');
  for e = 1:size(ellipsoids, 1)
    p = ellipsoids(e, :);
    c = cosd(p(7));
    s = sind(p(7));
    u = ((x - p(1)) * c + (y - p(2)) * s) / p(4);
    v = ((y - p(2)) * c - (x - p(1)) * s) / p(5);
    w = (z - p(3)) / p(6);
    magnitude = magnitude + p(8) * single(u.^2 + v.^2 + w.^2 <= 1);
  end

  phase = 1.2 * x + 0.8 * y.^2 - 0.5 * z + 1.5 * exp(-((x - 0.3).^2 + (y + 0.2).^2 + z.^2) / 0.3);
  image = magnitude .* exp(1i * single(phase));
  kspace = [];
  if outputs > 1
    kspace = image;
    for d = find(sizes > 1)
      kspace = fftshift(fft(ifftshift(kspace, d), [], d), d);
    end
  end
end

% Sample positions in [-1, 1) with 0 at index floor(n/2)+1, as a column.
function c = axis_coordinates(n)
  c = ((0:n - 1)' - floor(n / 2)) * (2 / n);
end
