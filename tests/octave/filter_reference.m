function [block, weighted] = filter_reference(data, ranges)
%FILTER_REFERENCE  What "filter" must return, computed independently.
%   RANGES is a 1x3 cell of [] or [first last]. Per axis the weight is 0 up to
%   the first sampled coordinate a, 1 - t^2 up to 1 at k = 0, 1 + t^2 up to 2
%   at k = -a, then 2 (t in single, t^2 + 1 in double); the axes are combined
%   by the geometric mean with a single-precision exponent.
  sizes = [size(data), 1, 1];
  sizes = sizes(1:max(3, ndims(data)));
  nvol = prod(sizes(4:end));
  weights = cell(1, 3);
  idx = arrayfun(@(n) 1:n, sizes, 'UniformOutput', false);
  weighted_axes = 0;
  for axis = 1:3
    n = sizes(axis);
    weights{axis} = ones(n, 1, 'single');
    r = ranges{axis};
    if ~isempty(r) && abs(r(1) + r(2)) > 1 && n > 0
      [weights{axis}, lower, upper, ok] = axis_weights(n, fix(r(1)), fix(r(2)));
      idx{axis} = lower + 1:upper + 1;
      weighted_axes = weighted_axes + ok;
    end
  end
  block = data(idx{:});
  block = complex(real(block), imag(block));
  f = ones(sizes(1:3), 'single');
  if weighted_axes > 0
    [wx, wy, wz] = ndgrid(weights{:});
    f = single(double(wx .* wy .* wz) .^ double(single(1) / single(weighted_axes)));
  end
  weighted = reshape(reshape(data, [sizes(1:3), nvol]) .* repmat(f, [1, 1, 1, nvol]), size(data));
end

function [w, P, Q, ok] = axis_weights(n, a, b)
  w = ones(n, 1, 'single');
  k = ceil(-n / 2) + (0:n - 2)';
  fraction = single(b - a + 1) / single(2 * max(a, b) + 1);
  ok = fraction < 1 && double(fraction) >= 0.55;
  P = 0;
  Q = 0;
  if ~ok
    return;
  end
  P = max([find(k == a); 1]) - 1;
  Q = max([find(k == -a); 1]) - 1;
  Z = max([find(k == 0); 1]) - 1;
  j = (0:n - 1)';
  w(j <= P) = 0;
  w(j >= Q) = 2;
  t = single(abs(j - Z)) / single(Q - Z);
  t2 = single(double(t) .^ 2 + 1);
  below = P < j & j < Z;
  above = Z <= j & j < Q;
  w(below) = single(2) - t2(below);
  w(above) = t2(above);
end
