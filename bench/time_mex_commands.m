function results = time_mex_commands(repeats)
%TIME_MEX_COMMANDS  The two MEX commands timed from Octave, beside Octave's own in-place-style pass.
%
%   RESULTS = TIME_MEX_COMMANDS() times single HOMODYNE_MEX calls on
%   256x256x128 complex single data, as a caller sees them (the host's
%   creation of the output included, which the C++ benchmark cannot see):
%   'filter' with one, two and three weighted axes, and 'multiply' bringing
%   a 64x64x32 complex image onto the data. The baseline, measured in the
%   same loop, is Octave's work = work .* weights with a single weight array
%   of the data's size. Every call starts from a fresh unshared copy of the
%   data, made outside the timing. Each case and the baseline take turns
%   for REPEATS runs (default 7); medians are returned.
%
%   RESULTS is a struct array, one element per case, with fields
%     name        'filter, 1 weighted axis', ..., 'multiply, 64x64x32 image'
%     seconds     median seconds of the call
%     baseline    median seconds of the baseline
%     peak_mib    peak resident memory that the call adds, in a fresh
%                 octave-cli (PEAK_MEMORY_IN_CHILD); for 'filter' this
%                 includes the returned block
%     output_mib  size of what the call returns (the block; 0 for 'multiply')
%
%   See also PEAK_MEMORY_IN_CHILD, RUN_BENCHMARKS.

  if nargin < 1
    repeats = 7;
  end
  sizes = [256 256 128];
  data = random_complex(sizes);
  lowres = random_complex(64, 64, 32);
  weights = single(rand(sizes));
  ranges = {{[-80 127], [], []}, {[-80 127], [-80 127], []}, {[-80 127], [-80 127], [-40 63]}};
  calls = [cellfun(@filter_call, ranges, 'UniformOutput', false), {'homodyne_mex(''multiply'', work, lowres)'}];
  names = {'filter, 1 weighted axis', 'filter, 2 weighted axes', 'filter, 3 weighted axes', 'multiply, 64x64x32 image'};
  outputs = [1 1 1 0];

  seconds = zeros(repeats, numel(calls));
  baseline = zeros(repeats, 1);
  output_mib = zeros(1, numel(calls));
  for r = 1:repeats
    work = complex(real(data), imag(data));
    started = tic;
    work = work .* weights;
    baseline(r) = toc(started);
    for c = 1:numel(calls)
      work = complex(real(data), imag(data));
      results_of_call = cell(1, outputs(c));
      started = tic;
      [results_of_call{:}] = eval(calls{c});
      seconds(r, c) = toc(started);
      output_mib(c) = sum(cellfun(@numel, results_of_call)) * 8 / 2^20;
    end
  end

  data_file = [tempname() '.mat'];
  save(data_file, 'data', 'lowres', '-v6');
  setup = ['homodyne_mex(''filter'', complex(ones(8, 8, 8, ''single'')), [-1 3], [], []); ' ...
           'work = complex(real(data), imag(data)); clear data; '];
  results = struct('name', names, 'seconds', num2cell(median(seconds, 1)), 'baseline', median(baseline), ...
                   'peak_mib', NaN, 'output_mib', num2cell(output_mib));
  for c = 1:numel(calls)
    results(c).peak_mib = peak_memory_in_child(data_file, setup, calls{c}, outputs(c));
  end
  delete(data_file);
end

% The 'filter' call on the variable work with the ranges {KX, KY, KZ}.
function call = filter_call(r)
  call = sprintf('homodyne_mex(''filter'', work, %s, %s, %s)', mat2str(r{1}), mat2str(r{2}), mat2str(r{3}));
end
