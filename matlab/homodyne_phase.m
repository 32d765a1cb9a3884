function corrected = homodyne_phase(image, lowres, varargin)
%HOMODYNE_PHASE  Take a low-resolution phase off an image, leaving the inputs untouched.
%
%   CORRECTED = HOMODYNE_PHASE(IMAGE, LOWRES)
%     The 'multiply' command of HOMODYNE_MEX on a copy of IMAGE, so that the
%     caller's array (and every variable sharing it) is never changed.
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
%   Either build of the module gives the same results. The separate-planes
%   build cannot write complex arrays in place, so there the real and
%   imaginary parts are corrected as real arrays and added:
%   Re(d)*Re(L)/|L| + Im(d)*Im(L)/|L|.
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
    [image, scale] = checked_array(wrapper, 'IMAGE', image);
    [lowres, lowres_scale] = checked_array(wrapper, 'LOWRES', lowres);
    dims = max(ndims(image), ndims(lowres));
    [image_sizes, lowres_sizes] = deal(size(image), size(lowres));
    image_sizes(end + 1:dims) = 1;
    lowres_sizes(end + 1:dims) = 1;
    if ~isequal(image_sizes(4:end), lowres_sizes(4:end))
      homodyne_error(wrapper, 'badInput', ['LOWRES (size %s) must have the sizes of IMAGE (size %s) ' ...
                     'from dimension 4 on: one low-resolution volume per image volume.'], ...
                     size_text(lowres), size_text(image));
    end
    work = remove_phase(working_copy(image, scale), working_copy(lowres, lowres_scale));
    corrected = restored(wrapper, 'CORRECTED', work, scale, class(image), iscomplex(image));
  catch err
    homodyne_error(wrapper, err);
  end
end
