function ranges = detect_ranges(wrapper, kspace)
%DETECT_RANGES  The sampled k-range of each of the first three axes of KSPACE.
%   RANGES = DETECT_RANGES(WRAPPER, KSPACE) returns a 1x3 cell of [first last]
%   in k coordinates (k = 0 at index floor(n/2)+1): the contiguous block of
%   planes across the axis that hold at least one non-zero sample in any
%   volume. Homodyne reconstruction needs one contiguous acquired block per
%   axis, so gaps, and k-space without any non-zero sample, are refused
%   (homodyne:sampling).
  sizes = [size(kspace), 1, 1];
  volumes = reshape(kspace ~= 0, [sizes(1:3), prod(sizes(4:end))]);
  names = 'xyz';
  ranges = cell(1, 3);
  for axis = 1:3
    held = volumes;
    for other = setdiff(1:4, axis)
      held = any(held, other);
    end
    planes = find(held(:));
    if isempty(planes)
      homodyne_error(wrapper, 'sampling', ['KSPACE holds no non-zero sample, so the sampled ranges ' ...
                     'cannot be detected; give ''Ranges''.']);
    end
    k = planes - 1 - floor(sizes(axis) / 2);
    gap = find(diff(planes) > 1, 1);
    if ~isempty(gap)
      missing = sprintf('from %d to %d', k(gap) + 1, k(gap + 1) - 1);
      if k(gap + 1) - k(gap) == 2
        missing = sprintf('at k = %d', k(gap) + 1);
      end
      homodyne_error(wrapper, 'sampling', ['the non-zero planes of KSPACE along %s are not contiguous ' ...
                     '(k = %d .. %d, but nothing %s); homodyne reconstruction needs one contiguous ' ...
                     'acquired block per axis.'], names(axis), k(1), k(end), missing);
    end
    ranges{axis} = [k(1), k(end)];
  end
end
