function cases = test_filter_values()
%TEST_FILTER_VALUES  Block and weighted data of "filter" against independent expectations.
  cases = {
    'worked_axis_128', @worked_axis_128
    'one_two_three_weighted_axes', @one_two_three_weighted_axes
    'two_dimensional_data', @two_dimensional_data
    'four_and_five_dimensional_data', @four_and_five_dimensional_data
    'unweighted_and_rejected_axes', @unweighted_and_rejected_axes
    'real_data_give_complex_block', @real_data_give_complex_block
    'axis_without_samples', @axis_without_samples
  };
end

% Runs "filter" on a copy of DATA and checks block and weighted data bit for bit.
% Complex data reach the caller in place only in the interleaved layout.
function check_filter(layout, data, kx, ky, kz)
  [block, weighted] = filter_reference(data, {kx, ky, kz});
  work = unshare(data);
  out = homodyne_mex('filter', work, kx, ky, kz);
  assert(isequal(size(out), size(block)), 'block size %s, expected %s', mat2str(size(out)), mat2str(size(block)));
  assert(isequal(out, block), 'block values differ');
  if iscomplex(data) && strcmp(layout, 'separate')
    assert(isequal(work, data), 'separate layout: complex input expected unchanged');
  else
    assert(isequal(work, weighted), 'weighted data differ (max error %g)', max(abs(double(work(:)) - double(weighted(:)))));
  end
end

function d = random_kspace(varargin)
  d = complex(single(randn(varargin{:})), single(randn(varargin{:})));
end

function worked_axis_128(layout)
  data = complex(ones(128, 3, 'single'), ones(128, 3, 'single'));
  work = unshare(data);
  out = homodyne_mex('filter', work, [-40 63], [], []);
  assert(isequal(size(out), [81 3]));
  assert(isequal(out, data(25:105, :)));
  if strcmp(layout, 'interleaved')
    w = real(work(:, 1));
    assert(all(w(1:25) == 0) && w(65) == 1 && all(w(105:end) == 2));
    % Inside the symmetric part the weights of k and -k add up to 2.
    k = (0:127)' - 64;
    inside = abs(k) < 40;
    assert(max(abs(w(inside) + flipud(w(inside)) - 2)) < 1e-6);
  end
  % Fractional ends are truncated toward zero.
  check_filter(layout, random_kspace(128, 2), [-40.9 63.7], [], []);
end

function one_two_three_weighted_axes(layout)
  rand('seed', 1); randn('seed', 1);
  check_filter(layout, random_kspace(16, 12, 10), [-4 7], [], []);
  check_filter(layout, random_kspace(16, 12, 10), [], [-3 5], []);
  check_filter(layout, random_kspace(16, 12, 10), [], [], [-3 4]);
  check_filter(layout, random_kspace(16, 12, 10), [-4 7], [-3 5], []);
  check_filter(layout, random_kspace(16, 13, 10), [], [-4 6], [-3 4]);
  check_filter(layout, random_kspace(16, 12, 11), [-4 7], [-3 5], [-3 5]);
  check_filter(layout, random_kspace(17, 15, 9), [-5 8], [-4 7], [-2 4]);
end

function two_dimensional_data(layout)
  check_filter(layout, random_kspace(20, 14), [-6 9], [-4 6], []);
  check_filter(layout, random_kspace(20, 14), [-6 9], [], [0 1]);
  % A z-range whose ends do not cancel weights the one-sample z axis by 2.
  check_filter(layout, random_kspace(20, 14), [-6 9], [], [-1 3]);
end

function four_and_five_dimensional_data(layout)
  check_filter(layout, random_kspace(12, 10, 8, 3), [-3 5], [-3 4], [-2 3.5]);
  check_filter(layout, random_kspace(12, 10, 8, 2, 2), [-3 5], [], [-2 3.5]);
  check_filter(layout, random_kspace(12, 10, 8, 0), [-3 5], [], []);
end

function unweighted_and_rejected_axes(layout)
  data = random_kspace(128, 6);
  % |first + last| <= 1: the axis is kept whole and not weighted.
  check_filter(layout, data, [-64 63], [], []);
  check_filter(layout, data, [-64 65], [], []);
  check_filter(layout, data, [NaN 3], [], []);
  % Missing part at the positive end, symmetric, or below 55 %: rejected, the
  % axis collapses to its first sample and stays unweighted.
  for r = {[-64 40], [-1 20], [-3 60], [3 -9]}
    work = unshare(data);
    out = homodyne_mex('filter', work, r{1}, [], []);
    assert(isequal(out, data(1, :)), 'range %s: block not collapsed', mat2str(r{1}));
    assert(isequal(work, data), 'range %s: data weighted', mat2str(r{1}));
  end
end

function real_data_give_complex_block(layout)
  data = single(randn(16, 8));
  check_filter(layout, data, [-4 7], [], []);
  out = homodyne_mex('filter', data, [], [], []);
  % Complexity survives only where the host built the array (interleaved).
  assert(iscomplex(out) == strcmp(layout, 'interleaved'));
  assert(all(imag(out(:)) == 0));
end

function axis_without_samples(layout)
  % A range for an axis of size 0 must not crop samples that do not exist.
  out = homodyne_mex('filter', zeros(4, 0, 'single'), [], [-2 4], []);
  assert(isequal(size(out), [4 0]));
  out = homodyne_mex('filter', zeros(4, 0, 'single'), [-2 3.5], [-2 3.5], [1 2]);
  assert(isequal(size(out), [1 0]));
  check_filter(layout, zeros(6, 3, 0, 'single'), [-2 3.5], [], [-2 4]);
end
