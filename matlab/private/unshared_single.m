function y = unshared_single(x)
%UNSHARED_SINGLE  A single-precision copy of X with storage of its own.
%   Y = UNSHARED_SINGLE(X) for a single or double array X. The in-place
%   commands of homodyne_mex write into the storage of their argument and so
%   into every variable sharing it; Y shares with nothing. Complex arrays stay
%   complex, also when their imaginary part is zero.
  if isa(x, 'double')
    y = single(x);
  elseif iscomplex(x)
    y = complex(real(x), imag(x));
  elseif isempty(x)
    y = x;
  else
    y = x;
    y(1) = y(1);
  end
end
