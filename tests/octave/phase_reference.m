function out = phase_reference(data, L)
%PHASE_REFERENCE  Re(data .* conj(L) ./ abs(L)) in single, L on the data's grid, in the
%   command's order: m = sqrt(a*a + b*b), c = a/m, s = -b/m, re = c*dRe - s*dIm.
  a = real(L);
  b = imag(L);
  if iscomplex(L)
    m = sqrt(a .* a + b .* b);
    s = (-b) ./ m;
  else
    m = sqrt(a .* a);
    s = zeros(size(a), 'single');
  end
  c = a ./ m;
  out = c .* real(data);
  if iscomplex(data)
    out = out - s .* imag(data);
    out = complex(out, zeros(size(out), 'single'));
  end
end
