function [block, data] = weight_kspace(data, mex_ranges)
%WEIGHT_KSPACE  The homodyne weights and central block, through homodyne_mex 'filter'.
%   [BLOCK, DATA] = WEIGHT_KSPACE(DATA, MEX_RANGES) returns the unweighted
%   central block (always complex single) and DATA weighted by the homodyne
%   ramps; MEX_RANGES are the module's ranges of PLAN_AXES. DATA must be
%   single and shared with no variable that is still needed: it is used up,
%   so call it as [block, data] = weight_kspace(data, ...).
%   The separate build cannot write complex data in place, so there the real
%   and imaginary parts are weighted as two real arrays; the weights are real,
%   so the result is the same.
%   A range that starts at k = 0 gets the module's weight 2 at k = 0 (its ramp
%   has no sample there), where the homodyne weight is 1, the weight of every
%   plane whose mirror was acquired: that plane is divided by 2^(1/c), c the
%   number of weighted axes, since the module combines axes by the geometric
%   mean of their weights.
  if iscomplex(data) && strcmp(mex_layout(), 'separate')
    re = real(data);
    im = imag(data);
    block_re = homodyne_mex('filter', re, mex_ranges{:});
    block_im = homodyne_mex('filter', im, mex_ranges{:});
    block = complex(real(block_re), real(block_im));
    data = complex(re, im);
  else
    block = homodyne_mex('filter', data, mex_ranges{:});
  end
  if isreal(block)
    % The separate build returns the block of real data as a real array.
    block = complex(block);
  end
  weighted = find(~cellfun(@isempty, mex_ranges));
  excess = single(2) ^ (single(1) / single(numel(weighted)));
  for axis = weighted
    if mex_ranges{axis}(1) == 0
      centre = repmat({':'}, 1, ndims(data));
      centre{axis} = floor(size(data, axis) / 2) + 1;
      data(centre{:}) = data(centre{:}) / excess;
    end
  end
end
