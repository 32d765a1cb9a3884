function scale = unit_scale(x)
%UNIT_SCALE  The power of two at or below the largest magnitude of X's real and imaginary parts.
%   SCALE = UNIT_SCALE(X) is 1 for an array of zeros. X / SCALE has parts
%   below 2 in magnitude, and dividing or multiplying by a power of two
%   changes no digit, so data of any double's range reach the
%   single-precision module at unit size and come back bit for bit.
  largest = double(max(abs(real(x(:)))));
  if iscomplex(x)
    largest = max(largest, double(max(abs(imag(x(:))))));
  end
  scale = 1;
  if largest > 0
    scale = pow2(floor(log2(largest)));
  end
end
