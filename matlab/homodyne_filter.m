function [block, weighted] = homodyne_filter(kspace, kx, ky, kz, varargin)
%HOMODYNE_FILTER  Homodyne weighting and central block, leaving the input untouched.
%
%   [BLOCK, WEIGHTED] = HOMODYNE_FILTER(KSPACE, KX, KY, KZ)
%     The weighting step of one-pass HOMODYNE_RECON, by the same core (the
%     'filter' command of HOMODYNE_MEX's weights and crop on a copy of
%     KSPACE), so that the caller's array is never changed.
%
%     KSPACE  single or double k-space, real or complex, finite, centred:
%             k = 0 at index floor(n/2)+1 of each of the first three
%             dimensions. Dimensions 4 and up index independent volumes.
%     KX, KY, KZ  the sampled range [first last] of each axis in whole k
%             coordinates (any real numeric class), or [] for an axis to
%             leave whole and unweighted (KY and KZ may be omitted: []).
%             The ranges follow the one rule of HOMODYNE_RECON: inside the
%             axis and ordered; an axis on which at most one sampled plane
%             lacks its mirror (k -> -k) is left whole and unweighted; any
%             other range contains k = 0 and at least 55 % of its symmetric
%             extent. The missing part may lie at either end: the module
%             weights the mirrored axis, and both outputs are mirrored back.
%
%     BLOCK     the unweighted symmetric central block k = -m .. m of each
%               weighted axis (m = min(|first|, |last|)), whole axes
%               elsewhere; complex.
%     WEIGHTED  KSPACE multiplied by the homodyne weights (HOMODYNE_MEX
%               describes them; a range starting or ending at k = 0 weights
%               k = 0 by 1, like every plane whose mirror was acquired);
%               complex if KSPACE is complex.
%     Both are of KSPACE's class. The module works in single precision on
%     the data scaled by a power of two to unit size, so any finite double
%     data give the same results as at unit scale; a single result beyond
%     single precision's range raises homodyne:scale.
%
%   Errors carry an identifier homodyne:* (see HOMODYNE_RECON).
%
%   Example:
%     k = complex(single(randn(128, 96)), single(randn(128, 96)));
%     k(1:24, :) = 0;                          % k = -64 .. -41 not acquired
%     [block, weighted] = homodyne_filter(k, [-40 63]);
%     size(block)                              % 81 x 96; k is unchanged
%
%   See also HOMODYNE_PHASE, HOMODYNE_RECON, HOMODYNE_MEX.

  wrapper = 'homodyne_filter';
  if nargin < 2 || nargin > 4
    homodyne_error(wrapper, 'usage', ['usage: [BLOCK, WEIGHTED] = homodyne_filter(KSPACE, KX, KY, KZ) ' ...
                   '(KY and KZ may be omitted); see help homodyne_filter.']);
  end
  if nargin < 3
    ky = [];
  end
  if nargin < 4
    kz = [];
  end
  try
    require_module(wrapper);
    kspace = full_array(kspace);
    [block, weighted] = homodyne_recon_mex('filter', kspace, kx, ky, kz);
    % A separate-planes build hands complex results with a zero imaginary part back as real.
    block = complex(block);
    if iscomplex(kspace)
      weighted = complex(weighted);
    end
  catch err
    homodyne_error(wrapper, err);
  end
end
