function scale = unit_scale(x)
%UNIT_SCALE  The power of two at or below the largest magnitude of X's real and imaginary parts.
%   SCALE = UNIT_SCALE(X) is 1 for an array of zeros and NaN for one that
%   holds NaN or Inf. X / SCALE has parts below 2, and dividing or
%   multiplying by a power of two changes no digit, so data of any scale
%   reach the single-precision module as the same unit-size values and come
%   back bit for bit as at unit scale.
  largest = double(norm(real(x(:)), Inf));   % max(abs(.)) in one pass, NaN if any is
  if iscomplex(x)
    largest = [largest, double(norm(imag(x(:)), Inf))];
  end
  scale = 1;
  if ~all(isfinite(largest))
    scale = NaN;
  elseif max(largest) > 0
    scale = pow2(floor(log2(max(largest))));
  end
end
