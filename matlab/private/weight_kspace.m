function [block, data] = weight_kspace(data, kx, ky, kz)
%WEIGHT_KSPACE  The 'filter' command of homodyne_mex for either MEX layout.
%   [BLOCK, DATA] = WEIGHT_KSPACE(DATA, KX, KY, KZ) returns the unweighted
%   central block (always complex single) and DATA weighted by the homodyne
%   ramps. DATA must be single and shared with no variable that is still
%   needed: it is used up, so call it as [block, data] = weight_kspace(data, ...).
%   The separate build cannot write complex data in place, so there the real
%   and imaginary parts are weighted as two real arrays; the weights are real,
%   so the result is the same.
  if iscomplex(data) && strcmp(mex_layout(), 'separate')
    re = real(data);
    im = imag(data);
    block_re = homodyne_mex('filter', re, kx, ky, kz);
    block_im = homodyne_mex('filter', im, kx, ky, kz);
    block = complex(real(block_re), real(block_im));
    data = complex(re, im);
  else
    block = homodyne_mex('filter', data, kx, ky, kz);
  end
  if isreal(block)
    % The separate build returns the block of real data as a real array.
    block = complex(block);
  end
end
