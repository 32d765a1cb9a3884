function data = remove_phase(data, lowres)
%REMOVE_PHASE  The 'multiply' command of homodyne_mex for either MEX layout.
%   DATA = REMOVE_PHASE(DATA, LOWRES) replaces every sample d of DATA by
%   Re(d * conj(L) / |L|), L being LOWRES interpolated onto DATA's grid.
%   Complex DATA stay complex, with a zero imaginary part. DATA must be
%   single and shared with no variable that is still needed: it is used up,
%   so call it as data = remove_phase(data, lowres).
%   The separate build cannot write complex data in place, so there the two
%   parts are corrected as real arrays: Re(d)*Re(L)/|L| from LOWRES itself and
%   Im(d)*Im(L)/|L| from -1i*LOWRES, whose real part is Im(L).
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
