function [block, weighted] = homodyne_filter(kspace, kx, ky, kz)
%HOMODYNE_FILTER  Homodyne weighting and central block, leaving the input untouched.
%
%   [BLOCK, WEIGHTED] = HOMODYNE_FILTER(KSPACE, KX, KY, KZ)
%     The 'filter' command of HOMODYNE_MEX on a copy of KSPACE, so that the
%     caller's array (and every variable sharing it) is never changed.
%
%     KSPACE  single or double k-space, real or complex, centred: k = 0 at
%             index floor(n/2)+1 of each of the first three dimensions.
%             Dimensions 4 and up index independent volumes.
%     KX, KY, KZ  the sampled range [first last] of each axis in k
%             coordinates, or [] for an axis to leave whole and unweighted
%             (KY and KZ may be omitted: []). Only ranges whose missing part
%             lies at the negative end are weighted; HOMODYNE_MEX describes
%             the weights and how other ranges are treated.
%
%     BLOCK     the unweighted symmetric central block, complex single.
%     WEIGHTED  KSPACE as single, multiplied by the homodyne weights;
%               complex if KSPACE is complex.
%
%   Either build of the module gives the same results. The separate-planes
%   build cannot write complex arrays in place, so there the real and
%   imaginary parts are weighted as two real arrays (the weights are real);
%   which build is loaded is found by a tiny probe call on every use.
%
%   Example:
%     k = complex(single(randn(128, 96)), single(randn(128, 96)));
%     k(1:24, :) = 0;                          % k = -64 .. -41 not acquired
%     [block, weighted] = homodyne_filter(k, [-40 63]);
%     size(block)                              % 81 x 96; k is unchanged
%
%   See also HOMODYNE_PHASE, HOMODYNE_RECON, HOMODYNE_MEX.

  if nargin < 2
    error('homodyne_filter: give KSPACE and at least the KX range.');
  end
  if nargin < 3
    ky = [];
  end
  if nargin < 4
    kz = [];
  end
  if ~isfloat(kspace)
    error('homodyne_filter: KSPACE must be a single or double array.');
  end
  [block, weighted] = weight_kspace(unshared_single(kspace), kx, ky, kz);
end
