function [block, weighted] = filter_reference(data, ranges)
%FILTER_REFERENCE  What the "filter" command must return, computed independently.
%   RANGES is a 1x3 cell of [] or [first last]. The weights are built from the
%   homodyne rule in the test's own terms: per axis 0 up to the first sampled
%   coordinate a, 1 - t^2 up to 1 at k = 0, 1 + t^2 up to 2 at k = -a, then 2,
%   with t formed in single precision and t^2 + 1 in double; the axes are
%   combined by the geometric mean with a single-precision exponent.

  sizes = [size(data), 1, 1];
  sizes = sizes(1:max(3, ndims(data)));
  nvol = prod(sizes(4:end));
  weights = cell(1, 3);
  first = zeros(1, 3);
  last = zeros(1, 3);
  weighted_axes = 0;
  for axis = 1:3
    n = sizes(axis);
    w = ones(n, 1, 'single');
    r = ranges{axis};
    if isempty(r) || ~(abs(r(1) + r(2)) > 1) || n == 0
      first(axis) = 0;
      last(axis) = n - 1;
    else
      [w, lower, upper, ok] = axis_weights(n, fix(r(1)), fix(r(2)));
      first(axis) = lower;
      last(axis) = upper;
      if ok
        weighted_axes = weighted_axes + 1;
      end
    end
    weights{axis} = w;
  end

  idx = cell(1, numel(sizes));
  for d = 1:numel(sizes)
    idx{d} = 1:sizes(d);
  end
  for axis = 1:3
    idx{axis} = (first(axis):last(axis)) + 1;
  end
  block = complex(data(idx{:}));
  if ~iscomplex(block)
    block = complex(block, zeros(size(block), 'single'));
  end

  [wx, wy, wz] = ndgrid(weights{1}, weights{2}, weights{3});
  p = wx .* wy .* wz;
  if weighted_axes == 0
    f = ones(size(p), 'single');
  else
    e = double(single(1) / single(weighted_axes));
    f = single(double(p) .^ e);
  end
  volumes = reshape(data, [sizes(1:3), nvol]);
  weighted = reshape(volumes .* repmat(reshape(f, sizes(1:3)), [1, 1, 1, nvol]), size(data));
end

function [w, lower, upper, ok] = axis_weights(n, a, b)
  w = ones(n, 1, 'single');
  lo = ceil(-n / 2);
  k = lo + (0:n - 1)';
  fraction = single(b - a + 1) / single(2 * max(a, b) + 1);
  ok = fraction < 1 && double(fraction) >= 0.55;
  lower = 0;
  upper = 0;
  if ~ok
    return;
  end
  searched = k(1:end - 1);
  P = find(searched == a) - 1;
  Q = find(searched == -a) - 1;
  Z = find(searched == 0) - 1;
  if isempty(P), P = 0; end
  if isempty(Q), Q = 0; end
  if isempty(Z), Z = 0; end
  for j = 0:n - 1
    if j <= P
      w(j + 1) = 0;
    end
    if j >= Q
      w(j + 1) = 2;
    end
    if P < j && j < Z
      t = single(Z - j) / single(Q - Z);
      w(j + 1) = single(2) - single(double(t)^2 + 1);
    end
    if Z <= j && j < Q
      t = single(j - Z) / single(Q - Z);
      w(j + 1) = single(double(t)^2 + 1);
    end
  end
  lower = P;
  upper = Q;
end
