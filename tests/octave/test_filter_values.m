function cases = test_filter_values()
%TEST_FILTER_VALUES  Block and weighted data of "filter" against independent expectations.
  cases = {
    'worked_axis_128', @worked_axis_128
    'weighted_axes_2d_to_5d', @weighted_axes_2d_to_5d
    'unweighted_and_rejected_axes', @unweighted_and_rejected_axes
    'axis_without_samples', @axis_without_samples
  };
end

% "filter" on a copy of DATA, block and weighted data bit for bit; complex data
% reach the caller in place only in the interleaved layout.
function out = check_filter(layout, data, kx, ky, kz)
  where = sprintf('size %s, ranges %s', mat2str(size(data)), mat2str([kx, ky, kz]));
  [block, weighted] = filter_reference(data, {kx, ky, kz});
  work = unshare(data);
  out = homodyne_mex('filter', work, kx, ky, kz);
  assert(isequal(size(out), size(block)) && isequal(out, block), '%s: block differs', where);
  if iscomplex(data) && strcmp(layout, 'separate')
    weighted = data;
  end
  assert(isequal(work, weighted), '%s: data after the call differ', where);
end

function d = random_kspace(varargin)
  d = complex(single(randn(varargin{:})), single(randn(varargin{:})));
end

function worked_axis_128(layout)
  data = complex(ones(128, 3, 'single'), ones(128, 3, 'single'));
  work = unshare(data);
  out = homodyne_mex('filter', work, [-40 63], [], []);
  assert(isequal(size(out), [81 3]) && isequal(out, data(25:105, :)));
  if strcmp(layout, 'interleaved')
    w = real(work(:, 1));
    assert(all(w(1:25) == 0) && w(65) == 1 && all(w(105:end) == 2));
    % Inside the symmetric part the weights of k and -k add up to 2.
    inside = abs((0:127)' - 64) < 40;
    assert(max(abs(w(inside) + flipud(w(inside)) - 2)) < 1e-6);
  end
  % Fractional ends are truncated toward zero.
  check_filter(layout, random_kspace(128, 2), [-40.9 63.7], [], []);
end

% Complex and real data; a z-range whose ends do not cancel weights a
% one-sample z axis by 2.
function weighted_axes_2d_to_5d(layout)
  randn('seed', 1);
  table = {
    [16 12 10], [-4 7], [], []
    [16 12 10], [], [-3 5], []
    [16 12 10], [], [], [-3 4]
    [16 12 10], [-4 7], [-3 5], []
    [16 13 10], [], [-4 6], [-3 4]
    [16 12 11], [-4 7], [-3 5], [-3 5]
    [17 15 9], [-5 8], [-4 7], [-2 4]
    [20 14], [-6 9], [-4 6], []
    [20 14], [-6 9], [], [0 1]
    [20 14], [-6 9], [], [-1 3]
    [12 10 8 3], [-3 5], [-3 4], [-2 3.5]
    [12 10 8 2 2], [-3 5], [], [-2 3.5]
    [12 10 8 0], [-3 5], [], []
  };
  for t = 1:size(table, 1)
    data = random_kspace(table{t, 1});
    check_filter(layout, data, table{t, 2:4});
    check_filter(layout, real(data), table{t, 2:4});
  end
end

% Kept whole and unweighted where |first + last| <= 1; rejected (missing part at
% the positive end, symmetric, below 55 %): collapsed to the first sample.
function unweighted_and_rejected_axes(layout)
  data = random_kspace(128, 6);
  for r = {[-64 63], [-64 65], [NaN 3]}
    assert(isequal(check_filter(layout, data, r{1}, [], []), data), 'range %s not kept whole', mat2str(r{1}));
  end
  for r = {[-64 40], [-1 20], [-3 60], [3 -9]}
    assert(isequal(check_filter(layout, data, r{1}, [], []), data(1, :)), 'range %s not rejected', mat2str(r{1}));
  end
end

% A range for an axis of size 0 must not crop samples that do not exist.
function axis_without_samples(layout)
  out = homodyne_mex('filter', zeros(4, 0, 'single'), [], [-2 4], []);
  assert(isequal(size(out), [4 0]));
  out = homodyne_mex('filter', zeros(4, 0, 'single'), [-2 3.5], [-2 3.5], [1 2]);
  assert(isequal(size(out), [1 0]));
  check_filter(layout, zeros(6, 3, 0, 'single'), [-2 3.5], [], [-2 4]);
end
