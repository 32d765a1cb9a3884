function [work, scale] = working_copy(x)
%WORKING_COPY  X as single precision at unit scale, with storage of its own.
%   [WORK, SCALE] = WORKING_COPY(X) for a full single or double array X (see
%   CHECKED_ARRAY): WORK = single(X / SCALE), SCALE from UNIT_SCALE. The
%   in-place commands of homodyne_mex write into their argument's storage;
%   the division makes WORK a new array that shares it with no variable of
%   the caller. Complex X stays complex, also with a zero imaginary part.
  scale = unit_scale(x);
  work = single(x / scale);
  if iscomplex(x) && ~iscomplex(work)
    work = complex(work);
  end
end
