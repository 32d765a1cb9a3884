function [calls, outcome_of] = hostile_batch()
%HOSTILE_BATCH  Hostile homodyne_mex calls for SWEEP_IN_CHILDREN: commands that are no
%   text or name no command, every input count, class and empty shape in every
%   position, ranges of every shape and non-finite end, up to fourteen dimensions, and
%   images that do not fit. OUTCOME_OF judges a call 'S' (success), 'E' (homodyne_mex
%   error, inputs untouched) or 'F reason' (other error, changed inputs). Random shapes,
%   ranges and values of the numeric core are the fuzz targets' ground.
  rng(1, 'twister');
  outcome_of = @outcome_of;
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

function outcome = outcome_of(row)
  % Copies: a successful call changes its data in place, and rows share arrays.
  [args, nout] = row{:};
  args = cellfun(@unshare, args, 'UniformOutput', false);
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
