function scale = unit_scale(x)
%UNIT_SCALE  The power of two at or below the largest magnitude of X's real and imaginary parts.
%   SCALE = UNIT_SCALE(X) is 1 for an array of zeros. X / SCALE has parts
%   below 2, and dividing or multiplying by a power of two changes no digit,
%   so data of any scale reach the single-precision module as the same
%   unit-size values and come back bit for bit as at unit scale.
  part = real(x(:));
  largest = double(max(max(part), -min(part)));   % max and min are faster than abs
  if iscomplex(x)
    part = imag(x(:));
    largest = max(largest, double(max(max(part), -min(part))));
  end
  scale = 1;
  if largest > 0
    scale = pow2(floor(log2(largest)));
  end
end
