function img = homodyne_recon_vectorized(kspace, ranges)
%HOMODYNE_RECON_VECTORIZED  Homodyne reconstruction in plain vectorized code, without the MEX.
%
%   IMG = HOMODYNE_RECON_VECTORIZED(KSPACE, RANGES)
%     The chain of HOMODYNE_RECON written with whole-array operations and
%     INTERPN only: the baseline that the benchmark holds homodyne_recon
%     against. KSPACE is centred 3-D single k-space (k = 0 at index
%     floor(n/2)+1 of each of the first three dimensions; dimensions 4 and up
%     are independent volumes). RANGES is {KX, KY, KZ}, each [] (fully sampled)
%     or [first last] with the missing part at the negative end
%     (first < 0 < last, |first| < last); an axis with |first + last| <= 1
%     counts as fully sampled. IMG is real, of KSPACE's size and class.
%
%   Steps, as in homodyne_recon:
%   1. per weighted axis the homodyne ramp of k: 0 up to and including k =
%      first, 1 - (k/first)^2 up to k = 0, 1 + (k/first)^2 up to k = -first,
%      2 beyond; the weights of the weighted axes combined by their
%      geometric mean and applied to the data;
%   2. the unweighted symmetric block k = first .. -first of every weighted
%      axis cut out of the k-space;
%   3. both inverse transformed (centred DFT over the first three axes);
%   4. the block's low-resolution image L brought onto the data's grid by
%      INTERPN (linear, first and last samples of each axis aligned), one
%      volume at a time;
%   5. IMG = Re(d .* conj(L) ./ abs(L)), 0 where L is exactly 0.
%
%   Example:
%     [truth, k] = homodyne_phantom([128 128 32]);
%     k(:, 1:40, :) = 0;
%     img = homodyne_recon_vectorized(k, {[], [-24 63], []});
%
%   See also HOMODYNE_RECON.

  sizes = [size(kspace), 1, 1];
  weights = ones(1, class(kspace));
  block = repmat({':'}, 1, max(3, ndims(kspace)));
  weighted = 0;
  for axis = 1:3
    r = ranges{axis};
    if isempty(r) || abs(r(1) + r(2)) <= 1
      continue;
    end
    if ~(r(1) < 0 && -r(1) < r(2))
      error('homodyne_recon_vectorized: the missing part of axis %d must lie at its negative end.', axis);
    end
    weighted = weighted + 1;
    k = (0:sizes(axis) - 1) - floor(sizes(axis) / 2);
    weights = weights .* reshape(axis_ramp(k, r(1), class(kspace)), [ones(1, axis - 1), sizes(axis), 1]);
    block{axis} = find(k >= r(1) & k <= -r(1));
  end
  if weighted > 0
    weights = weights .^ (1 / weighted);
  end

  lowres = centred_idft(kspace(block{:}));
  img = centred_idft(kspace .* weights);
  volumes = prod(sizes(4:end));
  for v = 1:volumes
    phasor = conj(lowres_on_grid(lowres(:, :, :, v), sizes(1:3)));
    phasor = phasor ./ abs(phasor);
    img(:, :, :, v) = img(:, :, :, v) .* phasor;
  end
  img = real(img);
  img(isnan(img)) = 0;
end

% The homodyne weight of each coordinate K of an axis sampled from FIRST on.
function w = axis_ramp(k, first, class_name)
  t = k / first;
  w = (1 - t .^ 2) .* (k > first & k < 0) + (1 + t .^ 2) .* (k >= 0 & k < -first) + 2 * (k >= -first);
  w = cast(w, class_name);
end

% LOWRES (one volume) interpolated at SIZES points per axis, spread evenly
% from its first to its last sample. Octave's INTERPN takes no single
% complex values, so the real and imaginary parts go through it apart.
function values = lowres_on_grid(lowres, sizes)
  queries = cell(1, 3);
  for d = 1:3
    queries{d} = linspace(1, size(lowres, d), sizes(d));
  end
  [queries{:}] = ndgrid(queries{:});
  values = complex(interpn(real(lowres), queries{:}, 'linear'), interpn(imag(lowres), queries{:}, 'linear'));
end
