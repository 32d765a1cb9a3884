function [args, nout, count] = hostile_call(kind, seed, k)
%HOSTILE_CALL  Call K of a sweep of hostile homodyne_mex calls.
%   [ARGS, NOUT] = HOSTILE_CALL('adversarial', SEED, K) is the K-th entry of a
%   fixed list of adversarial calls; HOSTILE_CALL('random', SEED, K) a random
%   call drawn from a generator seeded with SEED and K. ARGS are the input
%   arguments, each in storage of its own, NOUT (0 or 1) the number of
%   outputs to ask for.
%   [~, ~, COUNT] = HOSTILE_CALL('adversarial', SEED) gives the list length.

  persistent list list_seed
  if strcmp(kind, 'adversarial')
    if isempty(list_seed) || list_seed ~= seed
      rng(seed, 'twister');
      list = adversarial_calls();
      list_seed = seed;
    end
    count = size(list, 1);
    if nargin < 3
      args = {};
      nout = 0;
      return;
    end
    % Copies: a successful call changes its data in place, and the list
    % shares arrays between entries.
    args = cellfun(@unshare, list{k, 1}, 'UniformOutput', false);
    nout = list{k, 2};
  else
    rng(seed * 100003 + k, 'twister');
    [args, nout] = random_call();
    count = Inf;
  end
end

% ---------------------------------------------------------------- fixed list

function calls = adversarial_calls()
  d = complex(ones(8, 6, 4, 'single'), 1);
  kx = [-2 4];
  calls = cell(0, 2);
  % Commands that are no text, and text that names no command.
  for first = {1, single('filter'), {'filter'}, struct('c', 'filter'), @sin, true, int8('f'), ...
               sparse(1), 1 + 2i, [], zeros(0, 3), cell(0, 1), uint16('filter')}
    calls(end + 1, :) = {[first, {d, kx, [], []}], 0};
  end
  calls(end + 1, :) = {{}, 0};
  for command = {'Filter', 'FILTER', 'filter ', ' filter', 'filter   ', sprintf('filter\t'), ...
                 'multiply ', 'Multiply', 'MULTIPLY', ' multiply', '', char(zeros(1, 0)), ...
                 char(zeros(0, 3)), ['filter'; 'filter'], reshape('filter', 1, 1, 6), ...
                 ['filter' char(0)], repmat('f', 1, 5000)}
    calls(end + 1, :) = {{command{1}, d, kx, [], []}, 0};
  end
  % Too few and too many inputs for both commands.
  for n = [1:4, 6:9]
    calls(end + 1, :) = {[{'filter'}, repmat({d}, 1, n - 1)], 1};
  end
  for n = [1:2, 4:7]
    calls(end + 1, :) = {[{'multiply'}, repmat({d}, 1, n - 1)], 0};
  end
  % Every class and every empty shape as data, as each range and as image.
  for value = [every_class(), every_empty()]
    calls(end + 1, :) = {{'filter', value{1}, kx, [], []}, 1};
    calls(end + 1, :) = {{'filter', d, value{1}, [], []}, 1};
    calls(end + 1, :) = {{'filter', d, [], value{1}, []}, 1};
    calls(end + 1, :) = {{'filter', d, [], [], value{1}}, 1};
    calls(end + 1, :) = {{'multiply', value{1}, ones(2, 2, 'single')}, 0};
    calls(end + 1, :) = {{'multiply', d, value{1}}, 0};
  end
  % Ranges of every shape and with non-finite or out-of-range ends.
  for range = {[-2 4 5], [-2; 4; 5], [-2 4; 1 2], -2, zeros(1, 2, 2), ones(2, 1, 1, 2), ...
               complex([-2 4]), sparse([-2 4]), zeros(0, 2), zeros(2, 0), zeros(1, 0), ...
               [NaN NaN], [NaN 3], [-3 NaN], [-Inf Inf], [-Inf 5], [Inf -Inf], [-1e300 1e300], ...
               [-2^31 2^31], [-2^31 - 1 2^31 + 1], [-realmax realmax], [-0 0], [63 -40], ...
               [-4.9 7.9], [0 4], [0 1], [-2^31 -2^31 + 1], [-Inf -2^31 + 1]}
    calls(end + 1, :) = {{'filter', d, range{1}, range{1}, range{1}}, 1};
  end
  % Five to fourteen dimensions, weighted on every axis, both commands.
  for n = 5:14
    sizes = [5 4 3 ones(1, n - 4) 2];
    data = complex(randn(sizes, 'single'), randn(sizes, 'single'));
    calls(end + 1, :) = {{'filter', data, [-1 2], [-1 2], [-1 2]}, 1};
    calls(end + 1, :) = {{'multiply', data, randn([2 2 2 ones(1, n - 4) 2], 'single')}, 0};
    calls(end + 1, :) = {{'multiply', data, randn([2 2 2 ones(1, n - 4) 1], 'single')}, 0};
  end
  % Images that do not fit the data: fewer volumes, fewer or more dimensions,
  % empty along a later dimension, zero (no phase), larger than the data.
  calls(end + 1, :) = {{'multiply', ones(4, 4, 2, 3, 'single'), ones(2, 2, 2, 2, 'single')}, 0};
  calls(end + 1, :) = {{'multiply', ones(4, 4, 2, 'single'), ones(2, 2, 'single')}, 0};
  calls(end + 1, :) = {{'multiply', ones(4, 4, 'single'), ones(2, 2, 2, 'single')}, 0};
  calls(end + 1, :) = {{'multiply', ones(4, 4, 'single'), ones(2, 0, 'single')}, 0};
  calls(end + 1, :) = {{'multiply', ones(4, 4, 2, 'single'), zeros(2, 2, 2, 'single')}, 0};
  calls(end + 1, :) = {{'multiply', ones(2, 2, 'single'), randn(9, 9, 'single')}, 0};
  calls(end + 1, :) = {{'multiply', single([NaN Inf; -Inf 1]), single([NaN 1; Inf 0])}, 0};
  % Empty along a first dimension only, with a volume count past 32 bits.
  calls(end + 1, :) = {{'filter', zeros([1 0 1 2^16 2^16 2^16], 'single'), [], [], []}, 1};
  calls(end + 1, :) = {{'multiply', zeros([1 0 1 2^16 2^16 2^16], 'single'), ones([1 1 1 1 1 2], 'single')}, 0};
end

% One array of every class the host passes, each small and not empty.
function values = every_class()
  values = {randn(3, 2), randn(3, 2, 'single'), int8([1 2]), uint8([1 2]), int16([1 2]), ...
            uint16([1 2]), int32([-2 4]), uint32([1 2]), int64([-2 4]), uint64([1 2]), ...
            true(3, 2), 'ab', {1, 2}, struct('a', {1, 2}), @sin, sparse([-2 4]), ...
            sparse([true false]), complex(randn(3, 2), 1), complex(randn(3, 2, 'single'), 1), ...
            sparse(complex([-2 4], 1))};
end

% Empty arrays of every shape, as single (the class the data must have),
% double (the class of the ranges) and a few others.
function values = every_empty()
  shapes = {[0 0], [1 0], [0 1], [0 3], [3 0], [0 2 2], [2 0 2], [2 2 0], [1 1 1 0], ...
            [2 2 2 2 0], [0 1 1 1 1 2]};
  values = {};
  for s = shapes
    values = [values, {zeros(s{1}, 'single'), zeros(s{1}), complex(zeros(s{1}, 'single')), ...
                       false(s{1}), char(zeros(s{1})), cell(s{1})}]; %#ok<AGROW>
  end
end

% ---------------------------------------------------------------- random calls

function [args, nout] = random_call()
  r = rand();
  if r < 0.45
    command = 'filter';
    args = {command, random_data(), random_range(), random_range(), random_range()};
    nout = 1;
  elseif r < 0.9
    command = 'multiply';
    data = random_data();
    args = {command, data, random_image(data)};
    nout = 0;
  else
    command = pick({'Filter', 'multiply ', ' filter', 'MULTIPLY', '', 'filterx', 7, {'multiply'}});
    args = {command, random_data(), random_range(), random_range(), random_range()};
    nout = 0;
  end
  if rand() < 0.15
    % A wrong number of inputs: drop some or add some of any kind.
    n = randi([1 8]);
    if n <= numel(args)
      args = args(1:n);
    else
      for k = numel(args) + 1:n
        args{k} = random_any(random_shape());
      end
    end
  end
  if ~strcmp(command, 'filter') || rand() < 0.1
    nout = 0;
  end
end

function data = random_data()
  if rand() < 0.25
    data = random_any(random_shape());
  else
    data = samples(random_shape(), 'single', rand() < 0.6);
  end
end

% An image with the data's number of dimensions most of the time.
function image = random_image(data)
  if rand() < 0.2
    image = random_any(random_shape());
    return;
  end
  sizes = size(data);
  if rand() < 0.2
    sizes = random_shape();
  else
    for d = 1:numel(sizes)
      sizes(d) = min(max(sizes(d) + randi([-2 1]), 0), 4);
    end
    sizes(end) = max(sizes(end), 2);
  end
  image = samples(sizes, 'single', rand() < 0.6);
end

function range = random_range()
  r = rand();
  if r < 0.15
    range = zeros(pick({[0 0], [0 2], [1 0], [0 1]}));
  elseif r < 0.3
    range = random_any(random_shape());
  else
    ends = [-64 -40.9 -40 -4 -3 -2 -1 -0.5 -0 0 0.5 1 2 3 3.5 4 7 40 63.7 64 ...
            NaN Inf -Inf 1e300 -1e300 2^31 -2^31 2^31 - 1 -2^31 - 1 2^53 realmax -realmax eps];
    range = ends(randi(numel(ends), 1, 2));
    if rand() < 0.3
      range = range(:);
    end
  end
end

% Sizes of 2 to 14 dimensions, zeros included, at most 2048 elements.
function sizes = random_shape()
  if rand() < 0.6
    n = randi([2 4]);
  else
    n = randi([5 14]);
  end
  sizes = randi([0 5], 1, n);
  if rand() < 0.7
    sizes(sizes == 0) = 1;
  end
  while prod(sizes) > 2048
    d = find(sizes > 1, 1, 'last');
    sizes(d) = sizes(d) - 1;
  end
end

function values = samples(sizes, cls, is_complex)
  values = randn(sizes, cls);
  special = rand(sizes) < 0.02;
  values(special) = cast(pick({NaN, Inf, -Inf, 0, 1e30}), cls);
  if is_complex
    values = complex(values, randn(sizes, cls));
  end
end

% A value of any class the host knows, of the given sizes where the class
% allows them.
function value = random_any(sizes)
  kinds = {'double', 'single', 'int8', 'uint8', 'int16', 'uint16', 'int32', 'uint32', 'int64', ...
           'uint64', 'logical', 'char', 'cell', 'struct', 'function_handle', 'sparse', ...
           'sparse logical', 'complex double', 'complex single', 'sparse complex'};
  plane = sizes(1:2);
  switch pick(kinds)
    case {'double', 'single'}
      value = samples(sizes, pick({'double', 'single'}), false);
    case {'int8', 'uint8', 'int16', 'uint16', 'int32', 'uint32', 'int64', 'uint64'}
      value = cast(round(100 * randn(sizes)), pick(kinds(3:10)));
    case 'logical'
      value = rand(sizes) > 0.5;
    case 'char'
      value = char(randi([32 126], sizes));
    case 'cell'
      value = cell(sizes);
    case 'struct'
      value = repmat(struct('data', single(1)), sizes);
    case 'function_handle'
      value = @() 1;
    case 'sparse'
      value = sparse(randn(plane));
    case 'sparse logical'
      value = sparse(rand(plane) > 0.5);
    case 'complex double'
      value = samples(sizes, 'double', true);
    case 'complex single'
      value = samples(sizes, 'single', true);
    case 'sparse complex'
      value = sparse(complex(randn(plane), randn(plane)));
  end
end

function item = pick(items)
  item = items{randi(numel(items))};
end
