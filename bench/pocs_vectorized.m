function img = pocs_vectorized(kspace, ranges, iterations, constraint)
%POCS_VECTORIZED  POCS partial-Fourier reconstruction in plain vectorized code, without the MEX.
%
%   IMG = POCS_VECTORIZED(KSPACE, RANGES, ITERATIONS, CONSTRAINT)
%     The reference that the benchmark holds homodyne_recon's POCS against,
%     written with whole-array operations and Octave's FFTs. KSPACE is
%     centred 3-D single k-space (k = 0 at index floor(n/2)+1 of each axis).
%     RANGES is {KX, KY, KZ}, each [] or [first last] (the acquired block,
%     containing k = 0, missing part at either end). ITERATIONS is run
%     exactly; CONSTRAINT is 'real' (x <- Re(x e^{-i phi}) e^{i phi}) or
%     'magnitude' (x <- |x| e^{i phi}). IMG is the final complex image.
%
%   Steps, as in the C++ core: the phase phi of the symmetric centre under
%   a Hann window (per partial axis, centred on the k-space peak, as wide as
%   the block allows on both sides), zero-padded to the full grid; then
%   ITERATIONS times: inverse transform, constraint, forward transform,
%   measured samples put back; a last inverse transform. The data stay in
%   FFT order between the transforms, as in the core.
%
%   Example:
%     [truth, k] = homodyne_phantom([128 128 32]);
%     k(:, 1:40, :) = 0;
%     img = pocs_vectorized(k, {[], [-24 63], []}, 20, 'magnitude');

  sizes = [size(kspace), 1];
  sizes = sizes(1:3);
  measured = false(sizes);
  window = ones(sizes, 'single');
  block = cell(1, 3);
  [~, peak_index] = max(abs(kspace(:)));
  [peak{1:3}] = ind2sub(sizes, peak_index);
  for axis = 1:3
    k = (0:sizes(axis) - 1)' - floor(sizes(axis) / 2);
    shape = ones(1, 3);
    shape(axis) = sizes(axis);
    if isempty(ranges{axis})
      block{axis} = true(sizes(axis), 1);
      continue;
    end
    r = ranges{axis};
    block{axis} = k >= r(1) & k <= r(2);
    p = k(peak{axis});
    half = min(p - r(1), r(2) - p);
    w = 0.5 * (1 + cos(pi * (k - p) / (half + 1)));
    w(abs(k - p) > half) = 0;
    window = window .* reshape(single(w), shape);
  end
  measured(block{1}, block{2}, block{3}) = true;

  to_origin = @(x) ifftshift(x);   % every axis of a 2-D or 3-D array
  to_centre = @(x) fftshift(x);
  data = to_origin(kspace);
  measured = to_origin(measured);
  phase = ifftn(to_origin(kspace .* window));
  phase = phase ./ abs(phase);
  phase(~isfinite(phase)) = 1;
  x = ifftn(data);
  for it = 1:iterations
    if strcmp(constraint, 'real')
      x = real(x .* conj(phase)) .* phase;
    else
      x = abs(x) .* phase;
    end
    estimate = fftn(x);
    estimate(measured) = data(measured);
    x = ifftn(estimate);
  end
  img = to_centre(x);
end
