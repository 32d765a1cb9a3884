function kspace = zero_outside(kspace, ranges)
%ZERO_OUTSIDE  KSPACE with the planes outside the sampled RANGES (1x3 cell of
%   [] or [first last] in k coordinates) set to zero: noise or filler that a
%   scanner left in unacquired lines is not data.
  for axis = 1:3
    r = ranges{axis};
    if isempty(r)
      continue;
    end
    n = size(kspace, axis);
    centre = floor(n / 2) + 1;
    outside = setdiff(1:n, double(r(1)) + centre:double(r(2)) + centre);
    if isempty(outside)
      continue;
    end
    index = repmat({':'}, 1, ndims(kspace));
    index{axis} = outside;
    kspace(index{:}) = 0;
  end
end
