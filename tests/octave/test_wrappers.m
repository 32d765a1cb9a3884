function cases = test_wrappers()
%TEST_WRAPPERS  homodyne_filter and homodyne_phase: the module's results in
%   either layout, leaving the caller's arrays and their sharers unchanged.
  cases = {
    'filter_results_and_inputs_unchanged', @filter_results_and_inputs_unchanged
    'phase_results_and_inputs_unchanged', @phase_results_and_inputs_unchanged
    'clear_errors', @clear_errors
  };
end

function d = random_complex(varargin)
  d = complex(single(randn(varargin{:})), single(randn(varargin{:})));
end

% Omitted ranges are []; double data are taken as single.
function filter_results_and_inputs_unchanged(~)
  randn('seed', 5);
  inputs = {random_complex(16, 12, 10), single(randn(20, 14)), double(random_complex(12, 10, 8, 3)), single(randn(20, 14))};
  ranges = {{[-4 7], [-3 5], []}, {[-6 9], [], []}, {[-3 5], [], [-2 3]}, {[-6 9]}};
  for t = 1:numel(inputs)
    data = inputs{t};
    original = unshare(data);
    sharer = data;
    [expected_block, expected_weighted] = filter_reference(single(data), [ranges{t}, {[], []}]);
    [block, weighted] = homodyne_filter(sharer, ranges{t}{:});
    assert(isequal(block, cast(expected_block, class(data))) && iscomplex(block), 'input %d: block', t);
    assert(isequal(weighted, cast(expected_weighted, class(data))), 'input %d: weighted data', t);
    assert(strcmp(class(weighted), class(data)) && iscomplex(weighted) == iscomplex(data), 'input %d: class or complexity', t);
    assert(isequal(data, original) && isequal(sharer, original), 'input %d changed', t);
  end
end

% Equal grids bit for bit; a lowres image of one phase theta on a coarser grid,
% its magnitude varying along every axis, turns d into Re(d * exp(-1i * theta)).
function phase_results_and_inputs_unchanged(~)
  randn('seed', 6);
  low = random_complex(10, 8, 6);
  original_low = unshare(low);
  for data = {random_complex(10, 8, 6), single(randn(10, 8, 6)), double(random_complex(10, 8, 6))}
    original = unshare(data{1});
    sharer = data{1};
    corrected = homodyne_phase(sharer, low);
    assert(isequal(corrected, cast(phase_reference(single(data{1}), low), class(data{1}))), 'complex input %d', iscomplex(data{1}));
    assert(iscomplex(corrected) == iscomplex(data{1}) && strcmp(class(corrected), class(data{1})));
    assert(isequal(data{1}, original) && isequal(sharer, original) && isequal(low, original_low));
  end
  [x, y, z] = ndgrid(1:5, 1:4, 1:3);
  for data = {random_complex(12, 9, 7), random_complex(12, 9, 7, 2)}
    corrected = homodyne_phase(data{1}, repmat(single((1 + x + 2 * y + 3 * z) * exp(0.7i)), [1 1 1 size(data{1}, 4)]));
    expected = real(double(data{1}) * exp(-0.7i));
    assert(max(abs(double(corrected(:)) - expected(:))) < 1e-5 * max(abs(expected(:))));
  end
end

% The wrappers check every input in their own words.
function clear_errors(~)
  data = random_complex(8, 4);
  original = unshare(data);
  table = {
    'homodyne_filter: KSPACE must be a single or double array, not int8.', @() homodyne_filter(int8(ones(8, 4)), [-2 3])
    'homodyne_filter: usage: [BLOCK, WEIGHTED] = homodyne_filter(KSPACE, KX, KY, KZ) (KY and KZ may be omitted); see help homodyne_filter.', @() homodyne_filter(data)
    'homodyne_phase: IMAGE must be a single or double array, not cell.', @() homodyne_phase({1}, data)
    'homodyne_phase: usage: CORRECTED = homodyne_phase(IMAGE, LOWRES); see help homodyne_phase.', @() homodyne_phase(data)
    'homodyne_filter: KX must be [] or [first last] in k coordinates, not a double 1x3.', @() homodyne_filter(data, [1 2 3])
    'homodyne_filter: KSPACE must not be empty (its size is 0x3).', @() homodyne_filter(zeros(0, 3, 'single'), [])
    'homodyne_phase: LOWRES (size 2x2x2x2) must have the sizes of IMAGE (size 8x4) from dimension 4 on: one low-resolution volume per image volume.', ...
      @() homodyne_phase(data, random_complex(2, 2, 2, 2))
  };
  for t = 1:size(table, 1)
    message = error_message_of(table{t, 2});
    assert(strcmp(message, table{t, 1}), 'expected "%s", got "%s"', table{t, 1}, message);
  end
  assert(isequal(data, original));
end
