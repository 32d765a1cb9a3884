function data = remove_phase(data, lowres)
%REMOVE_PHASE  The 'multiply' command of homodyne_mex for either MEX layout.
%   DATA = REMOVE_PHASE(DATA, LOWRES) replaces every sample d of DATA by
%   Re(d * conj(L) / |L|), L being LOWRES interpolated onto DATA's grid.
%   Complex DATA stay complex, with a zero imaginary part. DATA must be
%   single and shared with no variable that is still needed: it is used up,
%   so call it as data = remove_phase(data, lowres). LOWRES is single, with
%   DATA's sizes from dimension 4 on.
%   The host drops trailing single axes, so a 3-D DATA may meet a 2-D LOWRES
%   (one z sample, e.g. the block of a z range starting at k = 0) and the
%   module would refuse the different number of dimensions: that plane is
%   repeated, which interpolates to the same values; a 2-D DATA reads only
%   the first z sample of LOWRES, which is what the module does on an axis
%   of one sample.
%   The separate build cannot write complex data in place, so there the two
%   parts are corrected as real arrays: Re(d)*Re(L)/|L| from LOWRES itself and
%   Im(d)*Im(L)/|L| from -1i*LOWRES, whose real part is Im(L).
  if ndims(data) == 3 && ismatrix(lowres)
    lowres = repmat(lowres, [1 1 2]);
  elseif ismatrix(data) && ndims(lowres) == 3
    lowres = lowres(:, :, 1);
  end
  if iscomplex(data) && strcmp(mex_layout(), 'separate')
    re = real(data);
    im = imag(data);
    homodyne_mex('multiply', re, lowres);
    homodyne_mex('multiply', im, -1i * lowres);
    data = complex(re + im, zeros(size(re), 'single'));
  else
    homodyne_mex('multiply', data, lowres);
  end
end
