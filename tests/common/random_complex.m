function x = random_complex(varargin)
%RANDOM_COMPLEX  Single complex array of the given sizes, real and imaginary parts
%   standard normal (drawn with randn, so its seed decides them).
  x = complex(single(randn(varargin{:})), single(randn(varargin{:})));
end
