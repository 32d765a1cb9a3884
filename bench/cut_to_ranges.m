function k = cut_to_ranges(k, ranges)
%CUT_TO_RANGES  Centred k-space K with every sample outside RANGES {KX, KY, KZ} ([] or [first last]) set to 0.
  for axis = 1:3
    if isempty(ranges{axis})
      continue;
    end
    n = size(k, axis);
    coordinate = (0:n - 1) - floor(n / 2);
    index = repmat({':'}, 1, max(3, ndims(k)));
    index{axis} = coordinate < ranges{axis}(1) | coordinate > ranges{axis}(2);
    k(index{:}) = 0;
  end
end
