function cases = test_multiply_validation()
%TEST_MULTIPLY_VALIDATION  Every refusal of "multiply", in its order, with the data unchanged.
  cases = {
    'input_count', @input_count
    'refusals_in_order', @refusals_in_order
  };
end

function input_count(~)
  d = complex(ones(8, 4, 'single'), 1);
  expect_error('There must be at least 3 inputs.', @() homodyne_mex('multiply'));
  expect_error('There must be at least 3 inputs.', @() homodyne_mex('multiply', d));
  expect_error('Too many input arguments.', @() homodyne_mex('multiply', d, d, d));
  assert(isequal(d, complex(ones(8, 4, 'single'), 1)));
end

% The image's emptiness comes first, even before the data's class.
function refusals_in_order(~)
  low = ones(2, 2, 'single');
  dims = 'The data must have the same number of dimensions than the low resolution data';
  volumes = 'The low resolution data must hold at least as many volumes (dimensions 4 and up) as the data.';
  big = ' is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.';
  table = {
    'The low resolution data cannot be empty.', ones(4, 4), zeros(0, 2, 'single')
    'The low resolution data cannot be empty.', ones(4, 4, 'single'), []
    'Data must be of type single.', zeros(0, 4), low
    'Data must be of type single.', int8(ones(4)), low
    'Data cannot be empty.', zeros(0, 4, 'single'), low
    'LowRes must be of type single.', ones(4, 'single'), ones(2)
    'LowRes must be of type single.', ones(4, 'single'), {1}
    dims, ones(4, 4, 3, 'single'), low
    dims, ones(4, 4, 'single'), ones(2, 2, 2, 2, 'single')
    'The low resolution data cannot be empty along any dimension.', complex(ones(4, 4, 'single'), 1), zeros(2, 0, 'single')
    volumes, complex(ones(4, 4, 3, 3, 'single'), 1), ones(2, 2, 2, 2, 'single')
    volumes, ones(4, 4, 3, 2, 2, 'single'), ones(2, 2, 2, 1, 3, 'single')
    ['Data' big], zeros(1, 2^31, 0, 'single'), ones(1, 2, 2, 'single')
    ['Data' big], zeros([1 0 1 2^16 2^16 2^16], 'single'), ones([1 1 1 1 1 2], 'single')
    ['The low resolution data' big], ones(2, 2, 2, 'single'), zeros(1, 2^31, 0, 'single')
  };
  for t = 1:size(table, 1)
    data = table{t, 2};
    original = data;
    expect_error(table{t, 1}, @() homodyne_mex('multiply', data, table{t, 3}));
    assert(isequal(data, original), 'row %d: the data changed although the call was refused', t);
  end
  % Data without samples need nothing from the image.
  homodyne_mex('multiply', zeros(4, 0, 'single'), zeros(2, 0, 'single'));
end
