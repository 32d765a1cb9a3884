function [x, scale] = checked_array(wrapper, name, x)
%CHECKED_ARRAY  X, the array argument NAME of WRAPPER, checked and made a plain full array.
%   X must be a non-empty single or double array, real or complex, with
%   finite values and fewer than 2^31 elements (the module's index range).
%   Sparse arrays and the host's special matrices (diagonal, range) come
%   back as plain full arrays of the same values: the module reads full
%   storage only, and a special matrix handed to it is not what it writes.
%   SCALE is X's UNIT_SCALE, found by the same pass that looks for NaN and
%   Inf.
  if ~isfloat(x)
    homodyne_error(wrapper, 'badInput', '%s must be a single or double array, not %s.', name, class(x));
  end
  if isempty(x)
    homodyne_error(wrapper, 'badInput', '%s must not be empty (its size is %s).', name, size_text(x));
  end
  if numel(x) >= 2^31
    homodyne_error(wrapper, 'badInput', '%s must have fewer than 2^31 elements (its size is %s).', name, size_text(x));
  end
  was_complex = iscomplex(x);
  x = full(x);
  if was_complex && ~iscomplex(x)
    x = complex(x);   % the host drops an all-zero imaginary part on conversion
  end
  scale = unit_scale(x);
  if isnan(scale)
    homodyne_error(wrapper, 'badInput', '%s holds NaN or Inf values.', name);
  end
end
