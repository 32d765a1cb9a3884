function k = centred_dft(x, dims)
%CENTRED_DFT  The forward transform of CENTRED_IDFT: K = CENTRED_DFT(X) along the
%   first three axes, CENTRED_DFT(X, DIMS) along the dimensions DIMS only.
  if nargin < 2
    dims = 1:min(3, ndims(x));
  end
  k = x;
  for d = dims
    k = fftshift(fft(ifftshift(k, d), [], d), d);
  end
end
