function cases = test_multiply_values()
%TEST_MULTIPLY_VALUES  Phase correction of "multiply" against independent expectations.
  cases = {
    'exact_results', @exact_results
    'interpolation_matches_interpn', @interpolation_matches_interpn
    'zero_image_gives_nan', @zero_image_gives_nan
  };
end

% Magnitudes bounded away from zero, so that the phase is well defined.
function L = smooth_image(varargin)
  L = single((2 + rand(varargin{:})) .* exp(1i * 2 * pi * rand(varargin{:})));
end

function d = random_data(varargin)
  d = complex(single(randn(varargin{:})), single(randn(varargin{:})));
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
function exact_results(layout)
  rand('seed', 2); randn('seed', 2);
  row = @(d, L) {d, L, phase_reference(d, L)};
  d = random_data(10, 8);
  L = smooth_image(8, 6, 4, 3);
  table = [{complex(single(1), single(2)), complex(single(3), single(4)), complex(single(2.2), single(0))}
           row(complex(single([1 -2 0.25]), single([2 0.5 -3])), complex(single([3 3 -1]), single([4 4 1e-3])))
           row(single(randn(9, 7)), smooth_image(9, 7))
           {d, single(repmat([3; -2], 5, 8)), complex(real(d) .* single(repmat([1; -1], 5, 8)), zeros(10, 8, 'single'))}
           {d, single(ones(2, 2)), complex(real(d), zeros(10, 8, 'single'))}
           {random_data(8, 6, 4, 2), L, []}];
  table{end, 3} = phase_reference(table{end, 1}, L(:, :, :, 1:2));
  for sz = {[9 7], [9 7 5], [6 5 4 3], [4 3 2 ones(1, 11) 2]}
    table(end + 1, :) = row(random_data(sz{1}), smooth_image(sz{1}));
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
  check_interpolated(layout, random_data(32, 24), smooth_image(8, 6));
  check_interpolated(layout, random_data(32, 24, 12), smooth_image(8, 6, 4));
  check_interpolated(layout, random_data(17, 13, 9), smooth_image(5, 7, 3));
  check_interpolated(layout, real(random_data(17, 13, 9)), smooth_image(5, 7, 3));
  check_interpolated(layout, random_data(20, 16, 8, 3), smooth_image(6, 5, 4, 3));
  d = random_data(8, 1, 4);
  L = smooth_image(4, 3, 2);
  check_interpolated(layout, d, L(:, 1, :));
  assert(isequal(run_multiply(layout, d, L), run_multiply(layout, d, L(:, 1, :))));
end

function zero_image_gives_nan(layout)
  L = smooth_image(6, 6);
  L(2, 3) = 0;
  work = run_multiply(layout, random_data(6, 6), L);
  assert(isempty(work) || (isnan(work(2, 3)) && sum(isnan(work(:))) == 1));
end
