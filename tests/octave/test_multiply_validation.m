function cases = test_multiply_validation()
%TEST_MULTIPLY_VALIDATION  Every refusal of "multiply", in its order, with the data unchanged.
  cases = {
    'input_count', @input_count
    'specified_order', @specified_order
    'image_must_cover_the_data', @image_must_cover_the_data
    'oversized_arrays', @oversized_arrays
  };
end

function check_refused(message, data, lowres)
  original = data;
  expect_error(message, @() homodyne_mex('multiply', data, lowres));
  assert(isequal(data, original), 'the data changed although the call was refused');
end

function input_count(~)
  d = complex(ones(8, 4, 'single'), 1);
  expect_error('There must be at least 3 inputs.', @() homodyne_mex('multiply'));
  expect_error('There must be at least 3 inputs.', @() homodyne_mex('multiply', d));
  expect_error('Too many input arguments.', @() homodyne_mex('multiply', d, d, d));
  assert(isequal(d, complex(ones(8, 4, 'single'), 1)));
end

function specified_order(~)
  low = ones(2, 2, 'single');
  % The image's emptiness comes first, even before the data's class.
  check_refused('The low resolution data cannot be empty.', ones(4, 4), zeros(0, 2, 'single'));
  check_refused('The low resolution data cannot be empty.', ones(4, 4, 'single'), []);
  check_refused('Data must be of type single.', zeros(0, 4), low);
  check_refused('Data must be of type single.', int8(ones(4)), low);
  check_refused('Data cannot be empty.', zeros(0, 4, 'single'), low);
  check_refused('LowRes must be of type single.', ones(4, 'single'), ones(2));
  check_refused('LowRes must be of type single.', ones(4, 'single'), {1});
  check_refused('The data must have the same number of dimensions than the low resolution data', ...
                ones(4, 4, 3, 'single'), low);
  check_refused('The data must have the same number of dimensions than the low resolution data', ...
                ones(4, 4, 'single'), ones(2, 2, 2, 2, 'single'));
end

function image_must_cover_the_data(~)
  check_refused('The low resolution data cannot be empty along any dimension.', ...
                complex(ones(4, 4, 'single'), 1), zeros(2, 0, 'single'));
  check_refused('The low resolution data must hold at least as many volumes (dimensions 4 and up) as the data.', ...
                complex(ones(4, 4, 3, 3, 'single'), 1), ones(2, 2, 2, 2, 'single'));
  check_refused('The low resolution data must hold at least as many volumes (dimensions 4 and up) as the data.', ...
                ones(4, 4, 3, 2, 2, 'single'), ones(2, 2, 2, 1, 3, 'single'));
  % Data without samples need nothing from the image.
  d = zeros(4, 0, 'single');
  homodyne_mex('multiply', d, zeros(2, 0, 'single'));
  assert(isequal(size(d), [4 0]));
end

function oversized_arrays(~)
  check_refused('Data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.', ...
                zeros(1, 2^31, 0, 'single'), ones(1, 2, 2, 'single'));
  check_refused('Data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.', ...
                zeros([1 0 1 2^16 2^16 2^16], 'single'), ones([1 1 1 1 1 2], 'single'));
  check_refused('The low resolution data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.', ...
                ones(2, 2, 2, 'single'), zeros(1, 2^31, 0, 'single'));
end
