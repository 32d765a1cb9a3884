function x = full_array(x)
%FULL_ARRAY  Sparse, diagonal and range matrices as full arrays, for the core reads full storage only.
%   X = FULL_ARRAY(X); a complex X stays complex even where its imaginary part
%   is all zero (the host would drop it on conversion). Other values pass.
  if isnumeric(x)
    was_complex = iscomplex(x);
    x = full(x);
    if was_complex && ~iscomplex(x)
      x = complex(x);
    end
  end
end
