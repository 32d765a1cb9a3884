function cases = test_hostile_inputs()
%TEST_HOSTILE_INPUTS  Hostile calls through the real host: none may crash it.
%   Every call of the sweep (see HOSTILE_CALL) must either succeed or raise an
%   error of homodyne_mex, and a refused call must leave its inputs as they
%   were. The calls run in batches, each in a child octave-cli, so that a
%   crash is counted and the sweep goes on with the next call.
  cases = {
    'adversarial_calls', @(layout) sweep(layout, 'adversarial', 1, [])
    'random_calls', @(layout) sweep(layout, 'random', 7, 600)
  };
end

function sweep(layout, kind, seed, count)
  if isempty(count)
    [~, ~, count] = hostile_call(kind, seed);
  end
  batch_size = 100;
  log_file = [tempname() '.log'];
  cleanup = onCleanup(@() delete_if_present(log_file));
  crashes = {};
  next = 1;
  while next <= count
    last = min(next + batch_size - 1, count);
    [status, output] = system(child_command(kind, seed, next, last, log_file));
    [last_started, finished] = progress(log_file);
    if finished >= last
      next = last + 1;
    else
      % The host died in the call that started last (or before the first).
      crashed = max(last_started, next);
      crashes{end + 1} = sprintf('call %d (exit status %d): %s', crashed, status, ...
                                 tail_of(output)); %#ok<AGROW>
      next = crashed + 1;
    end
  end

  outcomes = read_outcomes(log_file);
  errors = sum(strncmp(outcomes, 'E', 1));
  successes = sum(strncmp(outcomes, 'S', 1));
  faults = outcomes(strncmp(outcomes, 'F', 1));
  fprintf('hostile %s calls [%s], seed %d: %d calls, %d errors, %d successes, %d crashes, %d faults\n', ...
          kind, layout, seed, count, errors, successes, numel(crashes), numel(faults));
  report = [crashes, faults];
  assert(isempty(report), 'hostile %s calls: %s', kind, strjoin(report(1:min(end, 5)), '; '));
  assert(errors + successes == count, 'hostile %s calls: %d of %d calls ran', kind, errors + successes, count);
end

% A child octave-cli with the module and these tests on its path.
function command = child_command(kind, seed, first, last, log_file)
  mex_dir = fileparts(which('homodyne_mex'));
  test_dir = fileparts(mfilename('fullpath'));
  octave = fullfile(OCTAVE_HOME(), 'bin', 'octave-cli');
  script = sprintf('addpath(''%s''); addpath(''%s''); hostile_batch(''%s'', %d, %d, %d, ''%s'');', ...
                   mex_dir, test_dir, kind, seed, first, last, log_file);
  command = sprintf('%s --no-gui --quiet --norc --eval "%s" 2>&1', octave, script);
end

% The call that started last, and the number of calls of the log that
% finished (whatever their batch).
function [last_started, finished] = progress(log_file)
  lines = log_lines(log_file);
  last_started = 0;
  finished = 0;
  for k = 1:numel(lines)
    parts = strsplit(lines{k}, ' ');
    call = str2double(parts{1});
    if numel(parts) == 1
      last_started = call;
    else
      finished = call;
    end
  end
end

function outcomes = read_outcomes(log_file)
  lines = log_lines(log_file);
  outcomes = {};
  for k = 1:numel(lines)
    space = find(lines{k} == ' ', 1);
    if ~isempty(space)
      outcomes{end + 1} = sprintf('%s (call %s)', lines{k}(space + 1:end), lines{k}(1:space - 1)); %#ok<AGROW>
    end
  end
end

function lines = log_lines(log_file)
  lines = {};
  if exist(log_file, 'file')
    text = fileread(log_file);
    lines = strsplit(strtrim(text), sprintf('\n'));
    lines = lines(~cellfun(@isempty, lines));
  end
end

function text = tail_of(output)
  text = strtrim(output(max(1, end - 600):end));
end

function delete_if_present(file)
  if exist(file, 'file')
    delete(file);
  end
end
