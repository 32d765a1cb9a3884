function count = run_batch(batch, first, last, log_file)
%RUN_BATCH  Calls FIRST to LAST of the rows that BATCH() lists, each judged by the
%   OUTCOME_OF(ROW) that BATCH returns beside them, in a child octave-cli of
%   SWEEP_IN_CHILDREN. Logs 'K' before and 'K OUTCOME' after call K: 'S' (success),
%   'E' (a clean error) or 'F reason' (a fault); a last line 'K' alone is a crash in
%   call K. COUNT = RUN_BATCH(BATCH) is the number of rows.
  persistent rows outcome_of made_by
  if ~strcmp(made_by, batch)
    [rows, outcome_of] = feval(batch);
    made_by = batch;
  end
  count = size(rows, 1);
  for k = first:min(last, count)
    append(log_file, sprintf('%d\n', k));
    outcome = outcome_of(rows(k, :));
    append(log_file, sprintf('%d %s\n', k, strrep(outcome, sprintf('\n'), ' ')));
  end
end

function append(log_file, text)
  fid = fopen(log_file, 'a');
  fprintf(fid, '%s', text);
  fclose(fid);
end
