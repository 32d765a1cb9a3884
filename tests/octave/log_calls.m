function log_calls(log_file, calls, outcome_of)
%LOG_CALLS  Run OUTCOME_OF(K) for every K in CALLS, logging 'K' before and 'K OUTCOME'
%   after each call: 'S' (success), 'E' (a clean error) or 'F reason' (a fault). A
%   last line 'K' alone is a crash in call K (see SWEEP_IN_CHILDREN).
  for k = calls
    append(log_file, sprintf('%d\n', k));
    outcome = outcome_of(k);
    append(log_file, sprintf('%d %s\n', k, strrep(outcome, sprintf('\n'), ' ')));
  end
end

function append(log_file, text)
  fid = fopen(log_file, 'a');
  fprintf(fid, '%s', text);
  fclose(fid);
end
