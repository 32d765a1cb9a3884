function work = working_copy(x, scale)
%WORKING_COPY  X as single precision at unit scale, with storage of its own.
%   WORK = WORKING_COPY(X, SCALE) for a full single or double array X and its
%   UNIT_SCALE (see CHECKED_ARRAY): WORK = single(X / SCALE). The
%   in-place commands of homodyne_mex write into their argument's storage;
%   the division makes WORK a new array that shares it with no variable of
%   the caller. Complex X stays complex, also with a zero imaginary part.
  work = single(x / scale);
  if iscomplex(x) && ~iscomplex(work)
    work = complex(work);
  end
end
