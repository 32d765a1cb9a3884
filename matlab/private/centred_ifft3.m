function x = centred_ifft3(x)
%CENTRED_IFFT3  Inverse DFT over the first three dimensions of centred data.
%   X = CENTRED_IFFT3(X): on both sides, index floor(n/2)+1 of every axis is
%   the origin (k = 0 in k-space, the centre of the image). Dimensions 4 and
%   up are independent volumes, transformed one at a time: a 3-D transform
%   per volume is about twice as fast as three 1-D passes over all of them.
%   The shifts are done as one gather before and one after each transform.
  sizes = size(x);
  to_origin = cell(1, 3);
  to_centre = cell(1, 3);
  for d = 1:3
    n = size(x, d);
    to_origin{d} = [floor(n / 2) + 1:n, 1:floor(n / 2)];
    to_centre{d} = [ceil(n / 2) + 1:n, 1:ceil(n / 2)];
  end
  volumes = prod(sizes(4:end));
  if volumes == 1
    x = ifftn(x(to_origin{:}));
    x = x(to_centre{:});
    return;
  end
  x = reshape(x, [size(x, 1), size(x, 2), size(x, 3), volumes]);
  for v = 1:volumes
    volume = ifftn(x(to_origin{:}, v));
    x(:, :, :, v) = volume(to_centre{:});
  end
  x = reshape(x, sizes);
end
