function cases = test_module_refusals()
%TEST_MODULE_REFUSALS  Every refusal of homodyne_mex, in its order, with the inputs
%   unchanged; command texts that name no command do nothing.
  cases = {
    'refusals_in_order', @refusals_in_order
    'unknown_commands_do_nothing', @unknown_commands_do_nothing
  };
end

% "filter": data class before emptiness, data before ranges, all classes before
% any complexity, complexity before shape, axes in order x, y, z; empty ranges
% are still checked, but judged by their first dimension only. "multiply": the
% image's emptiness comes first, even before the data's class.
function refusals_in_order(~)
  f = @(varargin) [{'filter'}, varargin];
  m = @(varargin) [{'multiply'}, varargin];
  d = single(ones(8, 4, 2));
  c = complex(ones(8, 4, 'single'), 1);
  low = ones(2, 2, 'single');
  text = 'The first input must be a string describing the functionality.';
  big = ' is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.';
  dims = 'The data must have the same number of dimensions than the low resolution data';
  volumes = 'The low resolution data must hold at least as many volumes (dimensions 4 and up) as the data.';
  table = {
    text, {1, single(1), [], [], []}
    text, {{'filter'}, single(1), [], [], []}
    text, {single('f')}
    text, {}
    'There must be at least 5 inputs.', f()
    'There must be at least 5 inputs.', f(c, [-2 4], [])
    'Too many input arguments.', f(c, [-2 4], [], [], [])
    'Data must be of type single.', f(ones(8, 4), [-2 4], [], [])
    'Data must be of type single.', f(int16(ones(8, 4)), [-2 4], [], [])
    'Data must be of type single.', f({single(1)}, [], [], [])
    'Data must be of type single.', f(zeros(0, 3), [], [], [])
    'Data cannot be empty.', f(zeros(0, 3, 'single'), [], [], [])
    'Data cannot be empty.', f(single([]), 1i, 1i, 1i)
    'Data cannot be empty.', f(zeros(0, 3, 'single'), single([1 2]), [], [])
    'kx-range must be of type double.', f(d, single([-2 4]), [], [])
    'ky-range must be of type double.', f(d, [], int8([-2 4]), [])
    'kz-range must be of type double.', f(d, [], [], 'ab')
    'kz-range must be of type double.', f(d, [1i 2], [], true)
    'kx-range must be of type double.', f(d, single([]), [], [])
    'kx-range must be real valued.', f(d, [-2 4] + 1i, [], [])
    'ky-range must be real valued.', f(d, [], [-2 4] + 1i, [])
    'kz-range must be real valued.', f(d, [], [], [-2 4] + 1i)
    'kz-range must be real valued.', f(d, [], [], complex(zeros(0, 2)))
    'ky-range must be real valued.', f(d, [1 2 3], [1 2] + 1i, [])
    'kx-range must not be sparse.', f(d, sparse([-2 4]), [], [])
    'ky-range must not be sparse.', f(d, [], sparse([0 4]), [])
    'kz-range must not be sparse.', f(d, [], [], sparse(1, 2))
    'The kx-range must be of length 2.', f(d, [1 2 3], ones(2, 2), ones(1, 2, 2))
    'The ky-range coordinates must be 1 dimensional vector.', f(d, [-2 4], ones(2, 2), ones(1, 2, 2))
    ['Data' big], f(zeros(1, 2^31, 0, 'single'), [], [], [])
    ['Data' big], f(zeros([1 0 1 2^16 2^16 2^16], 'single'), [], [], [])
    'There must be at least 3 inputs.', m()
    'There must be at least 3 inputs.', m(c)
    'Too many input arguments.', m(c, c, c)
    'The low resolution data cannot be empty.', m(ones(4, 4), zeros(0, 2, 'single'))
    'The low resolution data cannot be empty.', m(ones(4, 4, 'single'), [])
    'Data must be of type single.', m(zeros(0, 4), low)
    'Data must be of type single.', m(int8(ones(4)), low)
    'Data cannot be empty.', m(zeros(0, 4, 'single'), low)
    'LowRes must be of type single.', m(ones(4, 'single'), ones(2))
    'LowRes must be of type single.', m(ones(4, 'single'), {1})
    dims, m(ones(4, 4, 3, 'single'), low)
    dims, m(ones(4, 4, 'single'), ones(2, 2, 2, 2, 'single'))
    'The low resolution data cannot be empty along any dimension.', m(c, zeros(2, 0, 'single'))
    volumes, m(complex(ones(4, 4, 3, 3, 'single'), 1), ones(2, 2, 2, 2, 'single'))
    volumes, m(ones(4, 4, 3, 2, 2, 'single'), ones(2, 2, 2, 1, 3, 'single'))
    ['Data' big], m(zeros(1, 2^31, 0, 'single'), ones(1, 2, 2, 'single'))
    ['Data' big], m(zeros([1 0 1 2^16 2^16 2^16], 'single'), ones([1 1 1 1 1 2], 'single'))
    ['The low resolution data' big], m(ones(2, 2, 2, 'single'), zeros(1, 2^31, 0, 'single'))
  };
  names = {'kx', 'ky', 'kz'};
  for axis = 1:3
    for shape = {ones(1, 2, 2), 'must be 1 dimensional vector.'; ones(2, 2), 'coordinates must be 1 dimensional vector.'
                 ones(5, 0), 'coordinates must be 1 dimensional vector.'; [1 2 3], 'must be of length 2.'
                 1, 'must be of length 2.'}'
      r = {[], [], []};
      r{axis} = shape{1};
      table(end + 1, :) = {['The ' names{axis} '-range ' shape{2}], f(d, r{:})}; %#ok<AGROW>
    end
  end
  for t = 1:size(table, 1)
    args = table{t, 2};
    original = cellfun(@unshare, args, 'UniformOutput', false);
    expect_error(table{t, 1}, @() homodyne_mex(args{:}));
    assert(isequal(args, original), 'row %d: an input changed although the call was refused', t);
  end
  % Empty ranges judged by their first dimension; data without samples need
  % nothing from the image.
  homodyne_mex('filter', d, zeros(0, 5), zeros(0, 1), []);
  homodyne_mex('multiply', zeros(4, 0, 'single'), zeros(2, 0, 'single'));
end

% A multi-row char array is read column by column: ['fle';'itr'] is 'filter'.
function unknown_commands_do_nothing(~)
  data = single([1 2 3 4]');
  for command = {'Filter', 'FILTER', ' filter', 'filter ', 'filt', '', 'filterx', 'Multiply', 'multiply '}
    copy = unshare(data);
    homodyne_mex(command{1}, copy, [-1 3], [], []);
    assert(isequal(copy, data), 'command "%s" changed the data', command{1});
  end
  % Nothing is returned either: asking for an output is an error of the host.
  failed = false;
  try
    out = homodyne_mex('Filter', data, [], [], []); %#ok<NASGU>
  catch
    failed = true;
  end
  assert(failed, 'an unknown command returned a value');
  assert(isequal(homodyne_mex('filter', data, [], [], []), data));
  assert(isequal(homodyne_mex(['fle'; 'itr'], single([5 6]'), [], [], []), single([5 6]')));
end
