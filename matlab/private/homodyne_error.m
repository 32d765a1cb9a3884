function homodyne_error(wrapper, id, message, varargin)
%HOMODYNE_ERROR  Raise an error of the toolbox, named by its wrapper and identified.
%   HOMODYNE_ERROR(WRAPPER, ID, FORMAT, ...) raises 'WRAPPER: message' (FORMAT
%   and its values as for sprintf) with the identifier 'homodyne:ID'.
%   HOMODYNE_ERROR(WRAPPER, ERR) passes on ERR, an error caught in WRAPPER:
%   the toolbox's own errors with their identifier, in the wrapper's name
%   where a MEX module raised them (their messages carry the module's name
%   as a prefix); any other error (of homodyne_mex, which the wrappers never
%   let refuse an input, or of the host) in the wrapper's name, as
%   homodyne:noMemory when memory ran out and as homodyne:internal otherwise.
  if nargin == 2
    err = id;
    text = regexprep(err.message, '^((homodyne_mex|homodyne_recon_mex|ismrmrd_mex): *)+', '');
    if strncmp(err.identifier, 'homodyne:', 9)
      if strcmp(text, err.message)
        rethrow(err);
      end
      error(struct('identifier', err.identifier, 'message', [wrapper ': ' text]));
    end
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
