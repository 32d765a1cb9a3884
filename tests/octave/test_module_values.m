function cases = test_module_values()
%TEST_MODULE_VALUES  Results of "filter" and "multiply" against independent
%   expectations, and how they reach the caller in each MEX layout: in place for real
%   data and, in the interleaved layout only, for complex data, seen by every variable
%   that shares the storage; a whole complex block.
  cases = {
    'worked_axis_128', @worked_axis_128
    'weighted_axes_2d_to_5d', @weighted_axes_2d_to_5d
    'unweighted_and_rejected_axes', @unweighted_and_rejected_axes
    'axis_without_samples', @axis_without_samples
    'exact_phase_results', @exact_phase_results
    'interpolation_matches_interpn', @interpolation_matches_interpn
    'zero_image_gives_nan', @zero_image_gives_nan
  };
end

% "filter" on a copy of DATA, block and weighted data bit for bit; the block is
% complex unless a real input meets the separate layout (the interleaved one has
% the host build it); the weighted data reach the caller and its sharers.
function out = check_filter(layout, data, kx, ky, kz)
  where = sprintf('size %s, ranges %s', mat2str(size(data)), mat2str([kx, ky, kz]));
  [block, weighted] = filter_reference(data, {kx, ky, kz});
  work = unshare(data);
  sharer = work;
  out = homodyne_mex('filter', work, kx, ky, kz);
  assert(isequal(size(out), size(block)) && isequal(out, block), '%s: block differs', where);
  assert(isempty(out) || iscomplex(out) == (iscomplex(data) || strcmp(layout, 'interleaved')), '%s: block class', where);
  if iscomplex(data) && strcmp(layout, 'separate')
    weighted = data;
  end
  assert(isequal(work, weighted) && isequal(sharer, weighted), '%s: data after the call differ', where);
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
  check_filter(layout, random_complex(128, 2), [-40.9 63.7], [], []);
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
    [64 64 16], [], [], []
  };
  for t = 1:size(table, 1)
    data = random_complex(table{t, 1});
    check_filter(layout, data, table{t, 2:4});
    check_filter(layout, real(data), table{t, 2:4});
  end
end

% Kept whole and unweighted where |first + last| <= 1; rejected (missing part at
% the positive end, symmetric, below 55 %): collapsed to the first sample.
function unweighted_and_rejected_axes(layout)
  data = random_complex(128, 6);
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

% Magnitudes bounded away from zero, so that the phase is well defined.
function L = smooth_image(varargin)
  L = single((2 + rand(varargin{:})) .* exp(1i * 2 * pi * rand(varargin{:})));
end

% "multiply" on a copy of DATA: what the caller sees afterwards, or [] where
% complex data must come back unchanged (the separate layout's private copy).
function work = run_multiply(layout, data, lowres)
  work = unshare(data);
  homodyne_mex('multiply', work, lowres);
  if iscomplex(data) && strcmp(layout, 'separate')
    assert(isequal(work, data), 'separate layout: complex input expected unchanged');
    work = [];
  end
end

% (1 + 2i) with 3 + 4i is (1*3 + 2*4) / 5 = 2.2 exactly. More image volumes than
% data volumes: read at its own samples, exactly. A real image flips the sign,
% also interpolated between two positive samples.
function exact_phase_results(layout)
  rand('seed', 2); randn('seed', 2);
  row = @(d, L) {d, L, phase_reference(d, L)};
  d = random_complex(10, 8);
  L = smooth_image(8, 6, 4, 3);
  table = [{complex(single(1), single(2)), complex(single(3), single(4)), complex(single(2.2), single(0))}
           row(complex(single([1 -2 0.25]), single([2 0.5 -3])), complex(single([3 3 -1]), single([4 4 1e-3])))
           row(single(randn(9, 7)), smooth_image(9, 7))
           {d, single(repmat([3; -2], 5, 8)), complex(real(d) .* single(repmat([1; -1], 5, 8)), zeros(10, 8, 'single'))}
           {d, single(ones(2, 2)), complex(real(d), zeros(10, 8, 'single'))}
           {random_complex(8, 6, 4, 2), L, []}];
  table{end, 3} = phase_reference(table{end, 1}, L(:, :, :, 1:2));
  for sz = {[9 7], [9 7 5], [6 5 4 3], [4 3 2 ones(1, 11) 2]}
    table(end + 1, :) = row(random_complex(sz{1}), smooth_image(sz{1}));
  end
  for t = 1:size(table, 1)
    work = run_multiply(layout, table{t, 1}, table{t, 2});
    if ~isempty(work)
      assert(isequal(work, table{t, 3}) && iscomplex(work) == iscomplex(table{t, 1}), 'row %d differs', t);
    end
  end
end

function check_interpolated(layout, data, lowres)
  work = run_multiply(layout, data, lowres);
  if isempty(work)
    return;
  end
  s = [size(data), 1];
  ls = [size(lowres), 1];
  [xq, yq, zq] = ndgrid(linspace(1, ls(1), s(1)), linspace(1, ls(2), s(2)), linspace(1, ls(3), s(3)));
  dv = reshape(double(data), prod(s(1:3)), []);
  lv = reshape(double(lowres), prod(ls(1:3)), []);
  expected = zeros(size(dv));
  for v = 1:size(dv, 2)
    Li = interpn(repmat(reshape(lv(:, v), ls(1:3)), [1, 1, 1 + (ls(3) == 1)]), xq, yq, zq, 'linear');
    expected(:, v) = real(dv(:, v) .* conj(Li(:)) ./ abs(Li(:)));
  end
  err = abs(double(real(work(:))) - expected(:));
  assert(max(err ./ (1 + abs(double(data(:))))) < 2e-5, 'max relative error %g', max(err));
  assert(all(imag(work(:)) == 0));
end

% Data volume t uses image volume t; an axis of one data sample reads the
% image at its first sample.
function interpolation_matches_interpn(layout)
  rand('seed', 3); randn('seed', 3);
  check_interpolated(layout, random_complex(32, 24), smooth_image(8, 6));
  check_interpolated(layout, random_complex(32, 24, 12), smooth_image(8, 6, 4));
  check_interpolated(layout, random_complex(17, 13, 9), smooth_image(5, 7, 3));
  check_interpolated(layout, real(random_complex(17, 13, 9)), smooth_image(5, 7, 3));
  check_interpolated(layout, random_complex(20, 16, 8, 3), smooth_image(6, 5, 4, 3));
  d = random_complex(8, 1, 4);
  L = smooth_image(4, 3, 2);
  check_interpolated(layout, d, L(:, 1, :));
  assert(isequal(run_multiply(layout, d, L), run_multiply(layout, d, L(:, 1, :))));
end

function zero_image_gives_nan(layout)
  L = smooth_image(6, 6);
  L(2, 3) = 0;
  work = run_multiply(layout, random_complex(6, 6), L);
  assert(isempty(work) || (isnan(work(2, 3)) && sum(isnan(work(:))) == 1));
end
