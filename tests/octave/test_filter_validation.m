function cases = test_filter_validation()
%TEST_FILTER_VALIDATION  Every refusal of "filter", in its order, with the data unchanged.
  cases = {
    'input_count', @input_count
    'data_class_and_emptiness', @data_class_and_emptiness
    'range_class_then_complexity', @range_class_then_complexity
    'range_shapes_per_axis', @range_shapes_per_axis
    'empty_ranges_still_checked_for_class', @empty_ranges_still_checked_for_class
    'sparse_ranges', @sparse_ranges
    'oversized_data', @oversized_data
  };
end

function check_refused(message, data, kx, ky, kz)
  original = data;
  expect_error(message, @() homodyne_mex('filter', data, kx, ky, kz));
  assert(isequal(data, original), 'the data changed although the call was refused');
end

function input_count(~)
  d = single(complex(ones(8, 4), 1));
  expect_error('There must be at least 5 inputs.', @() homodyne_mex('filter'));
  expect_error('There must be at least 5 inputs.', @() homodyne_mex('filter', d, [-2 4], []));
  expect_error('Too many input arguments.', @() homodyne_mex('filter', d, [-2 4], [], [], []));
  assert(isequal(d, single(complex(ones(8, 4), 1))));
end

function data_class_and_emptiness(~)
  check_refused('Data must be of type single.', ones(8, 4), [-2 4], [], []);
  check_refused('Data must be of type single.', int16(ones(8, 4)), [-2 4], [], []);
  check_refused('Data must be of type single.', {single(1)}, [], [], []);
  % The class comes first: empty double data report the class.
  check_refused('Data must be of type single.', zeros(0, 3), [], [], []);
  check_refused('Data cannot be empty.', zeros(0, 3, 'single'), [], [], []);
  check_refused('Data cannot be empty.', single([]), 1i, 1i, 1i);
  % Data come before the ranges.
  check_refused('Data cannot be empty.', zeros(0, 3, 'single'), single([1 2]), [], []);
end

function range_class_then_complexity(~)
  d = single(ones(8, 4, 2));
  check_refused('kx-range must be of type double.', d, single([-2 4]), [], []);
  check_refused('ky-range must be of type double.', d, [], int8([-2 4]), []);
  check_refused('kz-range must be of type double.', d, [], [], 'ab');
  % All class tests come before any complexity test.
  check_refused('kz-range must be of type double.', d, [1i 2], [], true);
  check_refused('kx-range must be real valued.', d, [-2 4] + 1i, [], []);
  check_refused('ky-range must be real valued.', d, [], [-2 4] + 1i, []);
  check_refused('kz-range must be real valued.', d, [], [], [-2 4] + 1i);
  % Complexity is tested before any shape.
  check_refused('ky-range must be real valued.', d, [1 2 3], [1 2] + 1i, []);
end

function range_shapes_per_axis(~)
  d = single(ones(8, 4, 2));
  names = {'kx', 'ky', 'kz'};
  for axis = 1:3
    r = {[], [], []};
    name = names{axis};
    r{axis} = ones(1, 2, 2);
    check_refused(['The ' name '-range must be 1 dimensional vector.'], d, r{:});
    r{axis} = ones(2, 2);
    check_refused(['The ' name '-range coordinates must be 1 dimensional vector.'], d, r{:});
    r{axis} = ones(5, 0);
    check_refused(['The ' name '-range coordinates must be 1 dimensional vector.'], d, r{:});
    r{axis} = [1 2 3];
    check_refused(['The ' name '-range must be of length 2.'], d, r{:});
    r{axis} = 1;
    check_refused(['The ' name '-range must be of length 2.'], d, r{:});
  end
  % The axes are checked in order x, y, z.
  check_refused('The kx-range must be of length 2.', d, [1 2 3], ones(2, 2), ones(1, 2, 2));
  check_refused('The ky-range coordinates must be 1 dimensional vector.', d, [-2 4], ones(2, 2), ones(1, 2, 2));
  % Empty ranges are judged by their first dimension only.
  homodyne_mex('filter', d, zeros(0, 5), zeros(0, 1), []);
end

function empty_ranges_still_checked_for_class(~)
  d = single(ones(8, 4));
  check_refused('kx-range must be of type double.', d, single([]), [], []);
  check_refused('kz-range must be real valued.', d, [], [], complex(zeros(0, 2)));
end

function sparse_ranges(~)
  d = single(ones(8, 4));
  check_refused('kx-range must not be sparse.', d, sparse([-2 4]), [], []);
  check_refused('ky-range must not be sparse.', d, [], sparse([0 4]), []);
  check_refused('kz-range must not be sparse.', d, [], [], sparse(1, 2));
end

function oversized_data(~)
  % Sizes of 2^31 and more would overflow the 32-bit index arithmetic; an array
  % with such a size and no elements costs no memory. So would the volume count
  % of an array that is empty along its first dimensions only.
  message = 'Data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.';
  check_refused(message, zeros(1, 2^31, 0, 'single'), [], [], []);
  check_refused(message, zeros([1 0 1 2^16 2^16 2^16], 'single'), [], [], []);
end
