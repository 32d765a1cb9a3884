function x = mirror_axes(x, axes)
%MIRROR_AXES  Mirror centred data about the origin along the given axes.
%   X = MIRROR_AXES(X, AXES) maps coordinate k to -k along each axis in AXES
%   (a list of 1, 2, 3). With the origin at index floor(n/2)+1 this is a bare
%   flip on an odd axis; on an even axis the lowest coordinate -n/2 has no
%   partner and stays where it is, so the flip comes with a shift by one.
%   Mirroring k-space mirrors the image in the same way, and mirroring twice
%   gives the input back.
  if isempty(axes)
    return;
  end
  index = repmat({':'}, 1, max(3, ndims(x)));
  for d = axes
    n = size(x, d);
    index{d} = mod(2 * floor(n / 2) - (0:n - 1), n) + 1;
  end
  x = x(index{:});
end
