function count = hostile_batch(kind, seed, first, last, log_file)
%HOSTILE_BATCH  Hostile homodyne_mex calls FIRST to LAST, in a child octave-cli of
%   SWEEP_IN_CHILDREN: of a fixed 'adversarial' list (COUNT = HOSTILE_BATCH(KIND, SEED)
%   its length) or 'random', seeded with SEED and K. LOG_CALLS logs each as 'S'
%   (success), 'E' (homodyne_mex error, inputs untouched) or 'F reason' (other error,
%   changed inputs).
  persistent list list_seed
  if strcmp(kind, 'adversarial') && ~isequal(list_seed, seed)
    rng(seed, 'twister');
    list = adversarial_calls();
    list_seed = seed;
  end
  count = size(list, 1);
  if nargin < 3
    return;
  end
  log_calls(log_file, first:last, @(k) outcome_of(kind, seed, list, k));
end

function outcome = outcome_of(kind, seed, list, k)
  if strcmp(kind, 'random')
    rng(seed * 100003 + k, 'twister');
    [args, nout] = random_call();
  else
    % Copies: a successful call changes its data in place, and entries share arrays.
    args = cellfun(@unshare, list{k, 1}, 'UniformOutput', false);
    nout = list{k, 2};
  end
  reference = cellfun(@unshare, args, 'UniformOutput', false);
  outcome = 'S';
  try
    if nout == 1
      out = homodyne_mex(args{:}); %#ok<NASGU>
    else
      homodyne_mex(args{:});
    end
  catch err
    outcome = 'E';
    changed = find(~cellfun(@same_value, args, reference), 1);
    if ~strncmp(err.message, 'homodyne_mex: ', 14)
      outcome = ['F unclear error: ' err.message];
    elseif ~isempty(changed)
      outcome = sprintf('F input %d changed by a refused call (%s)', changed, err.message);
    end
  end
end

function calls = adversarial_calls()
  d = complex(ones(8, 6, 4, 'single'), 1);
  kx = [-2 4];
  calls = {{}, 0};
  % Commands that are no text, and text that names no command.
  for first = {1, single('filter'), {'filter'}, struct('c', 'filter'), @sin, true, int8('f'), ...
               sparse(1), 1 + 2i, [], zeros(0, 3), cell(0, 1), uint16('filter'), 'Filter', 'FILTER', ...
               'filter ', ' filter', 'filter   ', sprintf('filter\t'), 'multiply ', 'Multiply', ...
               'MULTIPLY', ' multiply', '', char(zeros(1, 0)), char(zeros(0, 3)), ['filter'; 'filter'], ...
               reshape('filter', 1, 1, 6), ['filter' char(0)], repmat('f', 1, 5000)}
    calls(end + 1, :) = {[first, {d, kx, [], []}], 0};
  end
  % Too few and too many inputs for both commands.
  for n = [1:4, 6:9]
    calls(end + 1, :) = {[{'filter'}, repmat({d}, 1, n - 1)], 1};
  end
  for n = [1:2, 4:7]
    calls(end + 1, :) = {[{'multiply'}, repmat({d}, 1, n - 1)], 0};
  end
  % Every class, and empty arrays of every shape in several classes, as data,
  % as each range and as image.
  values = {randn(3, 2), randn(3, 2, 'single'), int8([1 2]), uint8([1 2]), int16([1 2]), ...
            uint16([1 2]), int32([-2 4]), uint32([1 2]), int64([-2 4]), uint64([1 2]), ...
            true(3, 2), 'ab', {1, 2}, struct('a', {1, 2}), @sin, sparse([-2 4]), ...
            sparse([true false]), complex(randn(3, 2), 1), complex(randn(3, 2, 'single'), 1), ...
            sparse(complex([-2 4], 1))};
  for s = {[0 0], [1 0], [0 1], [0 3], [3 0], [0 2 2], [2 0 2], [2 2 0], [1 1 1 0], [2 2 2 2 0], [0 1 1 1 1 2]}
    values = [values, {zeros(s{1}, 'single'), zeros(s{1}), complex(zeros(s{1}, 'single')), ...
                       false(s{1}), char(zeros(s{1})), cell(s{1})}]; %#ok<AGROW>
  end
  for v = values
    calls = [calls; {{'filter', v{1}, kx, [], []}, 1; {'filter', d, v{1}, [], []}, 1
                     {'filter', d, [], v{1}, []}, 1; {'filter', d, [], [], v{1}}, 1
                     {'multiply', v{1}, ones(2, 2, 'single')}, 0; {'multiply', d, v{1}}, 0}]; %#ok<AGROW>
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
    calls = [calls; {{'filter', data, [-1 2], [-1 2], [-1 2]}, 1
                     {'multiply', data, randn([2 2 2 ones(1, n - 4) 2], 'single')}, 0
                     {'multiply', data, randn([2 2 2 ones(1, n - 4) 1], 'single')}, 0}]; %#ok<AGROW>
  end
  % Images that do not fit the data, non-finite values, and data empty along a
  % first dimension only with a volume count past 32 bits.
  huge = zeros([1 0 1 2^16 2^16 2^16], 'single');
  pairs = {ones(4, 4, 2, 3, 'single'), ones(2, 2, 2, 2, 'single'); ones(4, 4, 2, 'single'), ones(2, 2, 'single')
           ones(4, 4, 'single'), ones(2, 2, 2, 'single'); ones(4, 4, 'single'), ones(2, 0, 'single')
           ones(4, 4, 2, 'single'), zeros(2, 2, 2, 'single'); ones(2, 2, 'single'), randn(9, 9, 'single')
           single([NaN Inf; -Inf 1]), single([NaN 1; Inf 0]); huge, ones([1 1 1 1 1 2], 'single')};
  for p = 1:size(pairs, 1)
    calls(end + 1, :) = {{'multiply', pairs{p, :}}, 0};
  end
  calls(end + 1, :) = {{'filter', huge, [], [], []}, 1};
end

function [args, nout] = random_call()
  commands = {'filter', 'multiply', pick({'Filter', 'multiply ', ' filter', 'MULTIPLY', '', 'filterx', 7, {'multiply'}})};
  command = commands{find(rand() < [0.45 0.9 1], 1)};
  data = samples(random_shape(), 'single', rand() < 0.6);
  if rand() < 0.25
    data = random_any(random_shape());
  end
  args = {command, data, random_range(), random_range(), random_range()};
  if strcmp(command, 'multiply')
    args = {command, data, random_image(data)};
  end
  if rand() < 0.15
    % A wrong number of inputs: drop some or add some of any kind.
    n = randi([1 8]);
    args = args(1:min(n, end));
    for k = numel(args) + 1:n
      args{k} = random_any(random_shape());
    end
  end
  nout = double(strcmp(command, 'filter') && rand() >= 0.1);
end

% An image with the data's number of dimensions most of the time.
function image = random_image(data)
  sizes = min(max(size(data) + randi([-2 1], 1, ndims(data)), 0), 4);
  sizes(end) = max(sizes(end), 2);
  r = rand();
  if r < 0.16
    sizes = random_shape();
  end
  image = samples(sizes, 'single', rand() < 0.6);
  if r > 0.8
    image = random_any(random_shape());
  end
end

function range = random_range()
  ends = [-64 -40.9 -40 -4 -3 -2 -1 -0.5 -0 0 0.5 1 2 3 3.5 4 7 40 63.7 64 ...
          NaN Inf -Inf 1e300 -1e300 2^31 -2^31 2^31 - 1 -2^31 - 1 2^53 realmax -realmax eps];
  range = ends(randi(numel(ends), 1, 2));
  r = rand();
  if r < 0.15
    range = zeros(pick({[0 0], [0 2], [1 0], [0 1]}));
  elseif r < 0.3
    range = random_any(random_shape());
  elseif rand() < 0.3
    range = range(:);
  end
end

% Sizes of 2 to 14 dimensions, zeros included, at most 2048 elements.
function sizes = random_shape()
  sizes = randi([0 5], 1, randi(pick({[2 4], [2 4], [5 14]})));
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
  values(rand(sizes) < 0.02) = cast(pick({NaN, Inf, -Inf, 0, 1e30}), cls);
  if is_complex
    values = complex(values, randn(sizes, cls));
  end
end

% A value of any class the host knows, of the given sizes where the class allows.
function value = random_any(sizes)
  plane = sizes(1:2);
  ints = {'int8', 'uint8', 'int16', 'uint16', 'int32', 'uint32', 'int64', 'uint64'};
  makers = {@() samples(sizes, pick({'double', 'single'}), false), @() cast(round(100 * randn(sizes)), pick(ints)), ...
            @() rand(sizes) > 0.5, @() char(randi([32 126], sizes)), @() cell(sizes), ...
            @() repmat(struct('data', single(1)), sizes), @() @() 1, @() sparse(randn(plane)), ...
            @() sparse(rand(plane) > 0.5), @() samples(sizes, 'double', true), ...
            @() samples(sizes, 'single', true), @() sparse(complex(randn(plane), randn(plane)))};
  value = makers{randi(numel(makers))}();
end

function item = pick(items)
  item = items{randi(numel(items))};
end
