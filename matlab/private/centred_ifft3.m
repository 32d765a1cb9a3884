function x = centred_ifft3(x)
%CENTRED_IFFT3  Inverse DFT over the first three dimensions of centred data.
%   X = CENTRED_IFFT3(X): on both sides, index floor(n/2)+1 of every axis is
%   the origin (k = 0 in k-space, the centre of the image). Dimensions 4 and
%   up are independent volumes and are not transformed. The shifts are done
%   as one gather before and one after the transform.
  dims = max(3, ndims(x));
  to_origin = repmat({':'}, 1, dims);
  to_centre = repmat({':'}, 1, dims);
  for d = 1:3
    n = size(x, d);
    to_origin{d} = [floor(n / 2) + 1:n, 1:floor(n / 2)];
    to_centre{d} = [ceil(n / 2) + 1:n, 1:ceil(n / 2)];
  end
  x = x(to_origin{:});
  if ndims(x) <= 3
    x = ifftn(x);
  else
    for d = find([size(x, 1), size(x, 2), size(x, 3)] > 1)
      x = ifft(x, [], d);
    end
  end
  x = x(to_centre{:});
end
