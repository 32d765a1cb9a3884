function scale = unit_scale(x)
%UNIT_SCALE  The power of two that brings X's values to unit size for the single-precision module.
%   SCALE = UNIT_SCALE(X) is 1 when the largest magnitude of X's real and
%   imaginary parts lies in [2^-20, 2^20]: there the module's sums cannot
%   overflow and |L|^2 of the low-resolution image cannot underflow, even
%   over 2^31 samples. Otherwise it is the power of two at or below that
%   magnitude, so that X / SCALE has parts below 2. Scaling by a power of
%   two changes no digit, so the result is the same either way, bit for bit.
  part = real(x(:));
  largest = double(max(max(part), -min(part)));   % max and min are faster than abs
  if iscomplex(x)
    part = imag(x(:));
    largest = max(largest, double(max(max(part), -min(part))));
  end
  scale = 1;
  if largest > 0 && (largest < 2^-20 || largest > 2^20)
    scale = pow2(floor(log2(largest)));
  end
end
