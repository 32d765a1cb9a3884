function cases = test_wrappers()
%TEST_WRAPPERS  homodyne_filter and homodyne_phase: the module's results, in
%   either MEX layout, without touching the caller's arrays.
  cases = {
    'filter_results_in_both_layouts', @filter_results_in_both_layouts
    'filter_leaves_input_and_sharers_unchanged', @filter_leaves_input_and_sharers_unchanged
    'phase_results_in_both_layouts', @phase_results_in_both_layouts
    'phase_interpolates_lowres', @phase_interpolates_lowres
    'phase_leaves_inputs_and_sharers_unchanged', @phase_leaves_inputs_and_sharers_unchanged
    'clear_errors', @clear_errors
  };
end

function d = random_complex(varargin)
  d = complex(single(randn(varargin{:})), single(randn(varargin{:})));
end

function filter_results_in_both_layouts(~)
  randn('seed', 5);
  inputs = {random_complex(16, 12, 10), single(randn(20, 14)), double(random_complex(12, 10, 8, 3))};
  ranges = {{[-4 7], [-3 5], []}, {[-6 9], [], []}, {[-3 5], [], [-2 3]}};
  for t = 1:numel(inputs)
    data = inputs{t};
    [expected_block, expected_weighted] = filter_reference(single(data), ranges{t});
    [block, weighted] = homodyne_filter(data, ranges{t}{:});
    assert(isequal(block, expected_block) && iscomplex(block), 'input %d: block', t);
    assert(isequal(weighted, expected_weighted), 'input %d: weighted data', t);
    assert(isa(weighted, 'single') && iscomplex(weighted) == iscomplex(data), 'input %d: class or complexity', t);
  end
  % Omitted ranges are [].
  data = inputs{2};
  [block, weighted] = homodyne_filter(data, [-6 9]);
  [expected_block, expected_weighted] = filter_reference(data, {[-6 9], [], []});
  assert(isequal(block, expected_block) && isequal(weighted, expected_weighted));
end

function filter_leaves_input_and_sharers_unchanged(~)
  for data = {random_complex(16, 8), single(randn(16, 8))}
    original = unshare(data{1});
    sharer = data{1};
    homodyne_filter(sharer, [-4 7]);
    assert(isequal(data{1}, original) && isequal(sharer, original));
  end
end

function phase_results_in_both_layouts(~)
  randn('seed', 6);
  low = random_complex(10, 8, 6);
  for data = {random_complex(10, 8, 6), single(randn(10, 8, 6))}
    corrected = homodyne_phase(data{1}, low);
    assert(isequal(corrected, phase_reference(data{1}, low)), 'complex input %d', iscomplex(data{1}));
    assert(iscomplex(corrected) == iscomplex(data{1}) && isa(corrected, 'single'));
  end
  % Double data are taken as single.
  data = double(random_complex(10, 8, 6));
  assert(isequal(homodyne_phase(data, low), phase_reference(single(data), low)));
end

% A low-resolution image of one phase on a coarser grid, with a magnitude
% that varies along every axis: every interpolated value carries that phase,
% so each sample d becomes Re(d * exp(-1i * theta)).
function phase_interpolates_lowres(~)
  theta = 0.7;
  [x, y, z] = ndgrid(1:5, 1:4, 1:3);
  low = single((1 + x + 2 * y + 3 * z) * exp(1i * theta));
  for data = {random_complex(12, 9, 7), random_complex(12, 9, 7, 2)}
    lows = repmat(low, [1 1 1 size(data{1}, 4)]);
    corrected = homodyne_phase(data{1}, lows);
    expected = real(double(data{1}) * exp(-1i * theta));
    assert(max(abs(double(corrected(:)) - expected(:))) < 1e-5 * max(abs(expected(:))));
  end
end

function phase_leaves_inputs_and_sharers_unchanged(~)
  low = random_complex(4, 3, 2);
  for data = {random_complex(8, 6, 4), single(randn(8, 6, 4))}
    original = unshare(data{1});
    original_low = unshare(low);
    sharer = data{1};
    homodyne_phase(sharer, low);
    assert(isequal(data{1}, original) && isequal(sharer, original) && isequal(low, original_low));
  end
end

% The wrappers check what they add; everything else is the module's check,
% whose message comes through unchanged and leaves the caller's data alone.
function clear_errors(~)
  data = random_complex(8, 4);
  expect_wrapper_error('homodyne_filter: KSPACE must be a single or double array.', @() homodyne_filter(int8(ones(8, 4)), [-2 3]));
  expect_wrapper_error('homodyne_filter: give KSPACE and at least the KX range.', @() homodyne_filter(data));
  expect_wrapper_error('homodyne_phase: IMAGE must be a single or double array.', @() homodyne_phase({1}, data));
  expect_wrapper_error('homodyne_phase: give IMAGE and LOWRES.', @() homodyne_phase(data));
  expect_error('The kx-range must be of length 2.', @() homodyne_filter(data, [1 2 3]));
  expect_error('Data cannot be empty.', @() homodyne_filter(zeros(0, 3, 'single'), []));
  expect_error('LowRes must be of type single.', @() homodyne_phase(data, double(data)));
  expect_error('The data must have the same number of dimensions than the low resolution data', ...
               @() homodyne_phase(data, random_complex(2, 2, 2)));
end

function expect_wrapper_error(message, fn)
  try
    fn();
  catch err
    assert(strcmp(err.message, message), 'expected "%s", got "%s"', message, err.message);
    return;
  end
  error('expected error "%s", but the call succeeded', message);
end
