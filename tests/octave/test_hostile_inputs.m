function cases = test_hostile_inputs()
%TEST_HOSTILE_INPUTS  Hostile calls (see HOSTILE_BATCH) must succeed or raise an error of
%   homodyne_mex that leaves the inputs alone; child processes count crashes.
  cases = {
    'adversarial_calls', @(layout) sweep(layout, 'adversarial', 1, [])
    'random_calls', @(layout) sweep(layout, 'random', 7, 600)
  };
end

function sweep(layout, kind, seed, count)
  if isempty(count)
    count = hostile_batch(kind, seed);
  end
  assert(count >= 500, 'a sweep of only %d calls', count);
  log_file = [tempname() '.log'];
  fclose(fopen(log_file, 'w'));
  cleanup = onCleanup(@() delete(log_file));
  mex_dir = fileparts(which('homodyne_mex'));
  test_dir = fileparts(mfilename('fullpath'));
  octave = fullfile(OCTAVE_HOME(), 'bin', 'octave-cli');
  crashes = {};
  next = 1;
  while next <= count
    last = min(next + 99, count);
    script = sprintf('addpath(''%s''); addpath(''%s''); hostile_batch(''%s'', %d, %d, %d, ''%s'');', ...
                     mex_dir, test_dir, kind, seed, next, last, log_file);
    [status, output] = system(sprintf('%s --no-gui --quiet --norc --eval "%s" 2>&1', octave, script));
    [calls, outcomes] = read_log(log_file);
    started_only = cellfun(@isempty, outcomes);
    if max([0, calls(~started_only)]) >= last
      next = last + 1;
    else
      % The host died in the call that started last (or before the first).
      crashed = max([next, calls(started_only)]);
      crashes{end + 1} = sprintf('call %d (exit status %d): %s', crashed, status, ...
                                 strtrim(output(max(1, end - 600):end))); %#ok<AGROW>
      next = crashed + 1;
    end
  end
  [calls, outcomes] = read_log(log_file);
  [errors, successes] = deal(sum(strncmp(outcomes, 'E', 1)), sum(strncmp(outcomes, 'S', 1)));
  faults = arrayfun(@(f) sprintf('%s (call %d)', outcomes{f}, calls(f)), find(strncmp(outcomes, 'F', 1)), 'UniformOutput', false);
  fprintf('hostile %s calls [%s], seed %d: %d calls, %d errors, %d successes, %d crashes, %d faults\n', ...
          kind, layout, seed, count, errors, successes, numel(crashes), numel(faults));
  report = [crashes, faults];
  assert(isempty(report), 'hostile %s calls: %s', kind, strjoin(report(1:min(end, 5)), '; '));
  assert(errors + successes == count, 'hostile %s calls: %d of %d calls ran', kind, errors + successes, count);
end

% Per log line the call number and its outcome ('' for a call only started).
function [calls, outcomes] = read_log(log_file)
  tokens = regexp(regexp(fileread(log_file), '[^\n]+', 'match'), '^(\d+) ?(.*)$', 'tokens', 'once');
  calls = cellfun(@(t) str2double(t{1}), tokens);
  outcomes = cellfun(@(t) t{2}, tokens, 'UniformOutput', false);
end
