function hostile_batch(kind, seed, first, last, log_file)
%HOSTILE_BATCH  Run calls FIRST to LAST of a hostile sweep (see HOSTILE_CALL).
%   Meant for a child octave-cli of TEST_HOSTILE_INPUTS, so that a crash of the
%   host ends only this batch. Appends to LOG_FILE, per call, a line 'K' just
%   before the call and a line 'K outcome' after it, outcome being
%     S            the call succeeded
%     E            it raised an error of homodyne_mex and left its inputs alone
%     F reason     a fault: an error not from homodyne_mex, or changed inputs
%   so a line 'K' without an outcome at the end of the log is a crash in call K.

  for k = first:last
    append(log_file, sprintf('%d\n', k));
    [args, nout] = hostile_call(kind, seed, k);
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
      if ~strncmp(err.message, 'homodyne_mex: ', 14)
        outcome = ['F unclear error: ' err.message];
      else
        changed = find(~cellfun(@same_value, args, reference), 1);
        if ~isempty(changed)
          outcome = sprintf('F input %d changed by a refused call (%s)', changed, err.message);
        end
      end
    end
    append(log_file, sprintf('%d %s\n', k, strrep(outcome, sprintf('\n'), ' ')));
  end
end

function append(log_file, text)
  fid = fopen(log_file, 'a');
  fprintf(fid, '%s', text);
  fclose(fid);
end

% Same class, size, complexity, sparsity and values (NaN equal to NaN).
function same = same_value(a, b)
  same = strcmp(class(a), class(b)) && isequal(size(a), size(b)) && issparse(a) == issparse(b);
  if ~same
    return;
  end
  if isa(a, 'function_handle')
    same = strcmp(func2str(a), func2str(b));
  elseif isnumeric(a)
    same = iscomplex(a) == iscomplex(b) && isequaln(a, b);
  else
    same = isequaln(a, b);
  end
end
