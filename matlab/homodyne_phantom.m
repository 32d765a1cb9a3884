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
    require_module(wrapper);
    if ~isnumeric(sizes) || ~isreal(sizes) || ~any(numel(sizes) == [2 3]) || any(~isfinite(sizes(:))) ...
       || any(sizes(:) < 1) || any(sizes(:) ~= round(sizes(:)))
      homodyne_error(wrapper, 'badInput', 'SIZES must be [nx ny] or [nx ny nz] of positive whole numbers.');
    end
    sizes = [double(full(sizes(:)')), 1];
    sizes = sizes(1:3);
    if prod(sizes) >= 2^31
      homodyne_error(wrapper, 'badInput', 'SIZES %s give 2^31 or more samples.', mat2str(sizes));
    end
    [image, kspace] = homodyne_recon_mex('phantom', sizes);
  catch err
    homodyne_error(wrapper, err);
  end
end
