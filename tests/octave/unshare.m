function y = unshare(x)
%UNSHARE  A copy of X with storage of its own (complex stays complex), so an in-place
%   command changes no other variable; cells, structs and handles are returned as is.
  if isempty(x) || ~(isnumeric(x) || islogical(x) || ischar(x))
    y = x;
  elseif iscomplex(x)
    y = complex(real(x), imag(x));
  else
    y = x;
    y(1) = y(1);
  end
end
