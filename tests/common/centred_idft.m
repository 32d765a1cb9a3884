function x = centred_idft(k)
%CENTRED_IDFT  Inverse DFT of every volume of K (first three axes) with k = 0 at index
%   floor(n/2) + 1 of each axis and the image centred the same way.
  x = k;
  for d = 1:min(3, ndims(k))
    x = fftshift(ifft(ifftshift(x, d), [], d), d);
  end
end
