function ranges = detect_ranges(kspace)
%DETECT_RANGES  The sampled k-range of each of the first three axes of KSPACE.
%   RANGES = DETECT_RANGES(KSPACE) returns a 1x3 cell of [first last] in k
%   coordinates (k = 0 at index floor(n/2)+1): the contiguous block of planes
%   across the axis that hold at least one non-zero sample in any volume.
%   An axis whose non-zero planes have gaps between them is refused, since
%   homodyne reconstruction needs one contiguous acquired block per axis.
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
      error('homodyne_recon: KSPACE holds no non-zero sample, so the sampled ranges cannot be detected; give ''Ranges''.');
    end
    k = planes - 1 - floor(sizes(axis) / 2);
    if any(diff(planes) > 1)
      gap = find(diff(planes) > 1, 1);
      error(['homodyne_recon: the non-zero k-space planes along %s are not contiguous ' ...
             '(k = %d .. %d, but nothing from %d to %d); homodyne reconstruction needs ' ...
             'one contiguous acquired block per axis.'], ...
            names(axis), k(1), k(end), k(gap) + 1, k(gap + 1) - 1);
    end
    ranges{axis} = [k(1), k(end)];
  end
end
