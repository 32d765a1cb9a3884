function x = centred_idft(k, dims)
%CENTRED_IDFT  Inverse DFT with k = 0 at index floor(n/2) + 1 of each axis and
%   the image centred the same way: X = CENTRED_IDFT(K) along the first three
%   axes (every further index is a volume of its own), CENTRED_IDFT(K, DIMS)
%   along the dimensions DIMS only.
  if nargin < 2
    dims = 1:min(3, ndims(k));
  end
  x = k;
  for d = dims
    x = fftshift(ifft(ifftshift(x, d), [], d), d);
  end
end
