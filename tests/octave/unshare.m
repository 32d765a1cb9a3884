function y = unshare(x)
%UNSHARE  A copy of X with storage of its own, so an in-place command on it
%   changes no other variable. Complex arrays stay complex. Cells, structs and
%   function handles, which the module never writes into, are returned as is.
  if isempty(x) || ~(isnumeric(x) || islogical(x) || ischar(x))
    y = x;
  elseif iscomplex(x)
    y = complex(real(x), imag(x));
  else
    y = x;
    y(1) = y(1);
  end
end
