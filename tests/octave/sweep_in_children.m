function sweep_in_children(batch)
%SWEEP_IN_CHILDREN  Run every call that BATCH lists (see RUN_BATCH) in child octave-cli
%   processes of 100 calls each and assert that none crashed the host and none failed.
%   A call that started but did not finish is a crash, and the sweep goes on with the
%   next call in a new child.
  log_file = [tempname() '.log'];
  fclose(fopen(log_file, 'w'));
  cleanup = onCleanup(@() delete(log_file));
  paths = sprintf('addpath(''%s''); ', fileparts(which('homodyne_recon')), fileparts(which('homodyne_mex')), ...
                  fileparts(which('centred_idft')), fileparts(mfilename('fullpath')));
  count = run_batch(batch, 1, 0);
  assert(count >= 100, '%s lists only %d calls', batch, count);
  octave = fullfile(OCTAVE_HOME(), 'bin', 'octave-cli');
  crashes = {};
  next = 1;
  while next <= count
    last = min(next + 99, count);
    script = sprintf('%s run_batch(''%s'', %d, %d, ''%s'');', paths, batch, next, last, log_file);
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
  fprintf('%s: %d calls, %d errors, %d successes, %d crashes, %d faults\n', ...
          batch, count, errors, successes, numel(crashes), numel(faults));
  report = [crashes, faults];
  assert(isempty(report), '%s: %s', batch, strjoin(report(1:min(end, 5)), '; '));
  assert(errors + successes == count, '%s: %d of %d calls ran', batch, errors + successes, count);
end

% Per log line the call number and its outcome ('' for a call only started).
function [calls, outcomes] = read_log(log_file)
  tokens = regexp(regexp(fileread(log_file), '[^\n]+', 'match'), '^(\d+) ?(.*)$', 'tokens', 'once');
  calls = cellfun(@(t) str2double(t{1}), tokens);
  outcomes = cellfun(@(t) t{2}, tokens, 'UniformOutput', false);
end
