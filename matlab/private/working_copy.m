function [work, scale] = working_copy(x)
%WORKING_COPY  X as single precision at unit scale, with storage of its own.
%   [WORK, SCALE] = WORKING_COPY(X) for a full single or double array X (see
%   CHECKED_ARRAY): WORK = single(X / SCALE), SCALE from UNIT_SCALE. The
%   in-place commands of homodyne_mex write into their argument's storage,
%   and WORK shares it with no variable of the caller. Complex X stays
%   complex, also with a zero imaginary part.
  scale = unit_scale(x);
  if iscomplex(x)
    work = complex(single(real(x) / scale), single(imag(x) / scale));
  else
    work = single(x / scale);
  end
end
