function cases = test_multiply_values()
%TEST_MULTIPLY_VALUES  Phase correction of "multiply" against independent expectations.
  cases = {
    'combine_order', @combine_order
    'equal_size_is_exact', @equal_size_is_exact
    'coinciding_grid_is_exact', @coinciding_grid_is_exact
    'interpolation_matches_interpn', @interpolation_matches_interpn
    'volume_t_uses_image_volume_t', @volume_t_uses_image_volume_t
    'data_axis_of_one_sample', @data_axis_of_one_sample
    'real_image_flips_sign', @real_image_flips_sign
    'real_data', @real_data
    'zero_image_gives_nan', @zero_image_gives_nan
    'more_than_13_dimensions', @more_than_13_dimensions
  };
end

function L = smooth_image(varargin)
  % Magnitudes bounded away from zero, so that the phase is well defined.
  L = single((2 + rand(varargin{:})) .* exp(1i * 2 * pi * rand(varargin{:})));
end

function d = random_data(varargin)
  d = complex(single(randn(varargin{:})), single(randn(varargin{:})));
end

% Runs "multiply" on a copy of DATA; returns what the caller sees afterwards.
function work = run_multiply(layout, data, lowres)
  work = unshare(data);
  homodyne_mex('multiply', work, lowres);
  if iscomplex(data) && strcmp(layout, 'separate')
    % The host hands this layout a private copy of complex planes.
    assert(isequal(work, data), 'separate layout: complex input expected unchanged');
    work = [];
  end
end

function check_exact(layout, data, lowres, expected)
  work = run_multiply(layout, data, lowres);
  if ~isempty(work)
    assert(isequal(work, expected), 'values differ (max error %g)', max(abs(double(work(:)) - double(expected(:)))));
    assert(iscomplex(work) == iscomplex(data));
  end
end

function combine_order(layout)
  % (1 + 2i) with 3 + 4i: (1*3 + 2*4) / 5 = 2.2 exactly as a float.
  check_exact(layout, complex(single(1), single(2)), complex(single(3), single(4)), complex(single(2.2), single(0)));
  d = complex(single([1 -2 0.25]), single([2 0.5 -3]));
  L = complex(single([3 3 -1]), single([4 4 1e-3]));
  check_exact(layout, d, L, phase_reference(d, L));
end

function equal_size_is_exact(layout)
  for sz = {[9 7], [9 7 5], [6 5 4 3]}
    d = random_data(sz{1});
    L = smooth_image(sz{1});
    check_exact(layout, d, L, phase_reference(d, L));
  end
end

function coinciding_grid_is_exact(layout)
  % Same spatial size but more image volumes: the image is interpolated at its
  % own sample positions, which must give its values exactly.
  d = random_data(8, 6, 4, 2);
  L = smooth_image(8, 6, 4, 3);
  check_exact(layout, d, L, phase_reference(d, L(:, :, :, 1:2)));
end

function check_interpolated(layout, data, lowres)
  sizes = [size(data), 1];
  lsizes = [size(lowres), 1];
  work = run_multiply(layout, data, lowres);
  if isempty(work)
    return;
  end
  [xq, yq, zq] = ndgrid(linspace(1, lsizes(1), sizes(1)), linspace(1, lsizes(2), sizes(2)), ...
                        linspace(1, lsizes(3), sizes(3)));
  volumes = prod(sizes(4:end));
  expected = zeros(numel(data), 1);
  n = prod(sizes(1:3));
  for v = 1:volumes
    Lv = double(lowres((v - 1) * prod(lsizes(1:3)) + (1:prod(lsizes(1:3)))));
    Lv = reshape(Lv, [lsizes(1:3), 1]);
    if lsizes(3) == 1
      Li = interpn(Lv, xq, yq, 'linear');
    else
      Li = interpn(Lv, xq, yq, zq, 'linear');
    end
    dv = double(data((v - 1) * n + (1:n)));
    expected((v - 1) * n + (1:n)) = real(dv(:) .* conj(Li(:)) ./ abs(Li(:)));
  end
  err = abs(double(real(work(:))) - expected);
  assert(max(err ./ (1 + abs(double(data(:))))) < 2e-5, 'max relative error %g', max(err));
  assert(all(imag(work(:)) == 0));
end

function interpolation_matches_interpn(layout)
  rand('seed', 3); randn('seed', 3);
  check_interpolated(layout, random_data(32, 24), smooth_image(8, 6));
  check_interpolated(layout, random_data(32, 24, 12), smooth_image(8, 6, 4));
  check_interpolated(layout, random_data(17, 13, 9), smooth_image(5, 7, 3));
  check_interpolated(layout, random_data(20, 16, 8, 3), smooth_image(6, 5, 4, 3));
end

function volume_t_uses_image_volume_t(layout)
  % Every data volume is the same; image volume t has the constant phase t.
  d = repmat(random_data(12, 10, 6), [1 1 1 3]);
  L = zeros(4, 4, 3, 3, 'single');
  for t = 1:3
    L(:, :, :, t) = single(exp(1i * t));
  end
  work = run_multiply(layout, d, L);
  if ~isempty(work)
    for t = 1:3
      expected = real(double(d(:, :, :, t)) * exp(-1i * t));
      assert(max(max(max(abs(double(work(:, :, :, t)) - expected)))) < 1e-5);
    end
  end
end

function data_axis_of_one_sample(layout)
  % An axis of one data sample reads the image at its first sample.
  d = random_data(8, 1, 4);
  L = smooth_image(4, 3, 2);
  check_interpolated(layout, d, L(:, 1, :));
  work = run_multiply(layout, d, L);
  if ~isempty(work)
    reference = run_multiply(layout, d, L(:, 1, :));
    assert(isequal(work, reference));
  end
end

function real_image_flips_sign(layout)
  d = random_data(10, 8);
  L = single(repmat([3; -2], 5, 8));
  check_exact(layout, d, L, complex(real(d) .* sign(L), zeros(10, 8, 'single')));
  % Interpolated between two positive samples the sign stays +.
  check_exact(layout, d, single(ones(2, 2)), complex(real(d), zeros(10, 8, 'single')));
end

function real_data(layout)
  d = single(randn(9, 7));
  L = smooth_image(9, 7);
  work = run_multiply(layout, d, L);
  assert(~iscomplex(work));
  assert(isequal(work, phase_reference(d, L)));
end

function zero_image_gives_nan(layout)
  L = smooth_image(6, 6);
  L(2, 3) = 0;
  work = run_multiply(layout, random_data(6, 6), L);
  if ~isempty(work)
    assert(isnan(work(2, 3)));
    assert(sum(isnan(work(:))) == 1);
  end
end

function more_than_13_dimensions(layout)
  sz = [4 3 2 ones(1, 11) 2];
  d = random_data(sz);
  L = smooth_image(sz);
  check_exact(layout, d, L, phase_reference(d, L));
end
