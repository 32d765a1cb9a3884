function x = mirror_k(x, dim)
%MIRROR_K  Centred data with k -> -k along DIM: a flip, and on an even axis a shift by
%   one, since the lowest coordinate -n/2 has no partner.
  x = circshift(flip(x, dim), mod(size(x, dim) + 1, 2), dim);
end
