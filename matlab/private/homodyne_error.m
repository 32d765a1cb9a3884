function homodyne_error(wrapper, id, message, varargin)
%HOMODYNE_ERROR  Raise an error of the toolbox, named by its wrapper and identified.
%   HOMODYNE_ERROR(WRAPPER, ID, FORMAT, ...) raises 'WRAPPER: message' (FORMAT
%   and its values as for sprintf) with the identifier 'homodyne:ID'.
%   HOMODYNE_ERROR(WRAPPER, ERR) passes on ERR, an error caught in WRAPPER:
%   the toolbox's own errors as they are; any other error (of homodyne_mex,
%   whose messages carry its name as a prefix, or of the host) in the
%   wrapper's name, as homodyne:noMemory when memory ran out and as
%   homodyne:internal otherwise, since the wrappers validate every input
%   before the module sees it.
  if nargin == 2
    err = id;
    if strncmp(err.identifier, 'homodyne:', 9)
      rethrow(err);
    end
    text = regexprep(err.message, '^(homodyne_mex: *)+', '');
    [id, message] = deal('internal', 'internal error, please report it: %s');
    if ~isempty(strfind(lower(text), 'out of memory'))
      [id, message] = deal('noMemory', '%s');
    elseif any(strcmp(err.identifier, {'Octave:bad-alloc', 'MATLAB:nomem', 'MATLAB:array:SizeLimitExceeded'}))
      [id, message] = deal('noMemory', 'out of memory (%s)');
    end
    varargin = {text};
  end
  error(struct('identifier', ['homodyne:' id], 'message', [wrapper ': ' sprintf(message, varargin{:})]));
end
