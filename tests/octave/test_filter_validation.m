function cases = test_filter_validation()
%TEST_FILTER_VALIDATION  Every refusal of "filter", in its order, with the data unchanged.
  cases = {
    'input_count', @input_count
    'refusals_in_order', @refusals_in_order
  };
end

function input_count(~)
  d = single(complex(ones(8, 4), 1));
  expect_error('There must be at least 5 inputs.', @() homodyne_mex('filter'));
  expect_error('There must be at least 5 inputs.', @() homodyne_mex('filter', d, [-2 4], []));
  expect_error('Too many input arguments.', @() homodyne_mex('filter', d, [-2 4], [], [], []));
  assert(isequal(d, single(complex(ones(8, 4), 1))));
end

% Data class before emptiness, data before ranges, all classes before any
% complexity, complexity before shape, axes in order x, y, z; empty ranges are
% still checked, but judged by their first dimension only.
function refusals_in_order(~)
  d = single(ones(8, 4, 2));
  big = 'Data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.';
  table = {
    'Data must be of type single.', ones(8, 4), [-2 4], [], []
    'Data must be of type single.', int16(ones(8, 4)), [-2 4], [], []
    'Data must be of type single.', {single(1)}, [], [], []
    'Data must be of type single.', zeros(0, 3), [], [], []
    'Data cannot be empty.', zeros(0, 3, 'single'), [], [], []
    'Data cannot be empty.', single([]), 1i, 1i, 1i
    'Data cannot be empty.', zeros(0, 3, 'single'), single([1 2]), [], []
    'kx-range must be of type double.', d, single([-2 4]), [], []
    'ky-range must be of type double.', d, [], int8([-2 4]), []
    'kz-range must be of type double.', d, [], [], 'ab'
    'kz-range must be of type double.', d, [1i 2], [], true
    'kx-range must be of type double.', d, single([]), [], []
    'kx-range must be real valued.', d, [-2 4] + 1i, [], []
    'ky-range must be real valued.', d, [], [-2 4] + 1i, []
    'kz-range must be real valued.', d, [], [], [-2 4] + 1i
    'kz-range must be real valued.', d, [], [], complex(zeros(0, 2))
    'ky-range must be real valued.', d, [1 2 3], [1 2] + 1i, []
    'kx-range must not be sparse.', d, sparse([-2 4]), [], []
    'ky-range must not be sparse.', d, [], sparse([0 4]), []
    'kz-range must not be sparse.', d, [], [], sparse(1, 2)
    'The kx-range must be of length 2.', d, [1 2 3], ones(2, 2), ones(1, 2, 2)
    'The ky-range coordinates must be 1 dimensional vector.', d, [-2 4], ones(2, 2), ones(1, 2, 2)
    big, zeros(1, 2^31, 0, 'single'), [], [], []
    big, zeros([1 0 1 2^16 2^16 2^16], 'single'), [], [], []
  };
  names = {'kx', 'ky', 'kz'};
  for axis = 1:3
    for shape = {ones(1, 2, 2), 'must be 1 dimensional vector.'; ones(2, 2), 'coordinates must be 1 dimensional vector.'
                 ones(5, 0), 'coordinates must be 1 dimensional vector.'; [1 2 3], 'must be of length 2.'
                 1, 'must be of length 2.'}'
      r = {[], [], []};
      r{axis} = shape{1};
      table(end + 1, :) = [{['The ' names{axis} '-range ' shape{2}], d}, r]; %#ok<AGROW>
    end
  end
  for t = 1:size(table, 1)
    data = table{t, 2};
    original = data;
    expect_error(table{t, 1}, @() homodyne_mex('filter', data, table{t, 3:5}));
    assert(isequal(data, original), 'row %d: the data changed although the call was refused', t);
  end
  homodyne_mex('filter', d, zeros(0, 5), zeros(0, 1), []);
end
