function corrected = homodyne_phase(image, lowres)
%HOMODYNE_PHASE  Take a low-resolution phase off an image, leaving the inputs untouched.
%
%   CORRECTED = HOMODYNE_PHASE(IMAGE, LOWRES)
%     The 'multiply' command of HOMODYNE_MEX on a copy of IMAGE, so that the
%     caller's array (and every variable sharing it) is never changed.
%
%     IMAGE   single or double full-resolution image, real or complex.
%     LOWRES  single low-resolution complex (or real) image with the same
%             number of dimensions, typically the centred inverse DFT of the
%             block that HOMODYNE_FILTER returns. It is brought onto IMAGE's
%             grid by trilinear interpolation with the first and last samples
%             of every axis aligned; an image of IMAGE's own size is used as
%             it is. Volume t (dimensions 4 and up) serves volume t of IMAGE.
%
%     CORRECTED  single, IMAGE's size: every sample d becomes
%             Re(d * conj(L) / |L|), L the interpolated LOWRES value; NaN
%             where L is exactly 0. Complex if IMAGE is complex (with a zero
%             imaginary part), real otherwise.
%
%   Either build of the module gives the same results. The separate-planes
%   build cannot write complex arrays in place, so there the real and
%   imaginary parts are corrected as real arrays and added:
%   Re(d)*Re(L)/|L| + Im(d)*Im(L)/|L|.
%
%   Example:
%     [block, weighted] = homodyne_filter(k, [-40 63]);   % see HOMODYNE_FILTER
%     img = fftshift(ifft2(ifftshift(weighted)));
%     low = fftshift(ifft2(ifftshift(block)));
%     corrected = real(homodyne_phase(img, low));
%
%   See also HOMODYNE_FILTER, HOMODYNE_RECON, HOMODYNE_MEX.

  if nargin ~= 2
    error('homodyne_phase: give IMAGE and LOWRES.');
  end
  if ~isfloat(image)
    error('homodyne_phase: IMAGE must be a single or double array.');
  end
  corrected = remove_phase(unshared_single(image), lowres);
end
