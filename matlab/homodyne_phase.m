function corrected = homodyne_phase(image, lowres, varargin)
%HOMODYNE_PHASE  Take a low-resolution phase off an image, leaving the inputs untouched.
%
%   CORRECTED = HOMODYNE_PHASE(IMAGE, LOWRES)
%     The phase step of one-pass HOMODYNE_RECON, by the same core (the
%     'multiply' computation of HOMODYNE_MEX on a copy of IMAGE), so that the
%     caller's array is never changed.
%
%     IMAGE   single or double full-resolution image, real or complex, finite.
%     LOWRES  single or double low-resolution image, real or complex,
%             finite, with samples along every axis and IMAGE's sizes from
%             dimension 4 on, typically the centred inverse DFT of the block
%             that HOMODYNE_FILTER returns. It is brought onto IMAGE's grid by
%             trilinear interpolation with the first and last samples of
%             every axis aligned; an image of IMAGE's own size is used as it
%             is. Volume t (dimensions 4 and up) serves volume t of IMAGE.
%             Only its phase matters, so its scale does not.
%
%     CORRECTED  IMAGE's class and size: every sample d becomes
%             Re(d * conj(L) / |L|), L the interpolated LOWRES value; NaN
%             where L is exactly 0 (no phase exists there). Complex if IMAGE
%             is complex (with a zero imaginary part), real otherwise. The
%             module works in single precision on IMAGE scaled by a power of
%             two to unit size, so any finite double IMAGE gives the same
%             result as at unit scale.
%
%   Errors carry an identifier homodyne:* (see HOMODYNE_RECON).
%
%   Example:
%     [block, weighted] = homodyne_filter(k, [-40 63]);   % see HOMODYNE_FILTER
%     img = fftshift(ifft2(ifftshift(weighted)));
%     low = fftshift(ifft2(ifftshift(block)));
%     corrected = real(homodyne_phase(img, low));
%
%   See also HOMODYNE_FILTER, HOMODYNE_RECON, HOMODYNE_MEX.

  wrapper = 'homodyne_phase';
  if nargin ~= 2
    homodyne_error(wrapper, 'usage', 'usage: CORRECTED = homodyne_phase(IMAGE, LOWRES); see help homodyne_phase.');
  end
  try
    require_module(wrapper);
    image = full_array(image);
    corrected = homodyne_recon_mex('phase', image, full_array(lowres));
    if iscomplex(image)
      corrected = complex(corrected);   % a separate-planes build hands it back as real
    end
  catch err
    homodyne_error(wrapper, err);
  end
end
