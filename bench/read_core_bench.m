function [commands, interpolation] = read_core_bench(binary)
%READ_CORE_BENCH  Run the C++ benchmark program and read its cases.
%
%   [COMMANDS, INTERPOLATION] = READ_CORE_BENCH(BINARY) runs BINARY (the
%   core_bench program: Google Benchmark) with JSON output to a temporary
%   file, keeps its console output quiet, and reads the cases back.
%
%   COMMANDS: one element per case measured against a baseline of the same
%   run (counters ms and x_baseline, from bench_commands.cpp), with fields
%     name      readable case name, e.g. 'filter core, 2 weighted axes, interleaved'
%     ms        the case's time per call, milliseconds
%     baseline  what it is held against, and baseline_ms its time
%     ratio     ms / baseline_ms, as the program measured it
%     goal      the largest ratio the performance goals allow, NaN for none
%   The baselines' own cases appear only as baseline_ms of their cases.
%
%   INTERPOLATION: one element per case of bench_interp3.cpp, with fields
%     method    'stream' (the plain copy) or the interpolation method
%     volumes   number of 64x64x32 volumes queried at 256x256x128 points
%     ns        nanoseconds per point and volume (per float for the stream)
%     x_stream  ns over the stream's, same float count (NaN for the stream)
%
%   See also RUN_BENCHMARKS.

  json_file = [tempname() '.json'];
  [status, output] = system(sprintf('"%s" --benchmark_format=json --benchmark_out=%s --benchmark_out_format=json', ...
                                    binary, json_file));
  if status ~= 0
    error('read_core_bench: %s failed:\n%s', binary, output);
  end
  report = jsondecode(fileread(json_file));
  delete(json_file);
  cases = report.benchmarks;
  if isstruct(cases)
    cases = num2cell(cases);
  end

  commands = struct('name', {}, 'ms', {}, 'baseline', {}, 'baseline_ms', {}, 'ratio', {}, 'goal', {});
  interpolation = struct('method', {}, 'volumes', {}, 'ns', {}, 'x_stream', {});
  for c = 1:numel(cases)
    b = cases{c};
    if ~strcmp(b.run_type, 'iteration')
      continue;
    end
    name = regexprep(b.run_name, '/(min_time:[0-9.]+|manual_time|real_time)', '');
    if isfield(b, 'x_baseline')
      [label, baseline, goal] = command_case(name);
      commands(end + 1) = struct('name', label, 'ms', b.ms, 'baseline', baseline, ...
                                 'baseline_ms', b.ms / b.x_baseline, 'ratio', b.x_baseline, 'goal', goal);
    elseif isfield(b, 'ns_per_pt_vol')
      parts = regexp(name, '^BM_Interp3/(\w+)/volumes:(\d+)$', 'tokens', 'once');
      interpolation(end + 1) = struct('method', parts{1}, 'volumes', str2double(parts{2}), ...
                                      'ns', b.ns_per_pt_vol, 'x_stream', b.x_stream);
    elseif isfield(b, 'ns_per_float')
      volumes = regexp(name, 'volumes:(\d+)', 'tokens', 'once');
      interpolation(end + 1) = struct('method', 'stream', 'volumes', str2double(volumes{1}), ...
                                      'ns', b.ns_per_float, 'x_stream', NaN);
    end
  end
end

% Readable name, baseline and goal of a bench_commands.cpp case: the
% arguments are BM_Filter/<weighted axes>/<layout> and
% BM_Multiply/<1: 64x64x32 image, 0: image of the data's size>/<layout>,
% layout 0 interleaved, 1 separate planes. Other names are shown as they are.
function [label, baseline, goal] = command_case(name)
  layouts = {'interleaved', 'separate planes'};
  label = name;
  baseline = 'C++ baseline';
  goal = NaN;
  filter = regexp(name, '^BM_Filter/(\d)/([01])$', 'tokens', 'once');
  multiply = regexp(name, '^BM_Multiply/([01])/([01])$', 'tokens', 'once');
  if ~isempty(filter)
    axes = str2double(filter{1});
    label = sprintf('filter core, %d weighted %s, %s', axes, plural('axis', 'axes', axes), layouts{str2double(filter{2}) + 1});
    baseline = 'in-place weight pass + block copy';
    goal = 1.3;
  elseif ~isempty(multiply)
    low = {'image of the data''s size', '64x64x32 image'};
    label = sprintf('multiply core, %s, %s', low{str2double(multiply{1}) + 1}, layouts{str2double(multiply{2}) + 1});
    baseline = 'in-place stream pass';
    if strcmp(multiply{1}, '1')
      goal = 4;
    end
  end
end

function word = plural(one, many, count)
  word = one;
  if count ~= 1
    word = many;
  end
end
