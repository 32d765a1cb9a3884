function profiles = plane_energy(kspace)
%PLANE_ENERGY  Energy of each plane across the first three axes of KSPACE.
%   PROFILES = PLANE_ENERGY(KSPACE) is a 1x3 cell: PROFILES{a} is a column
%   with the sum of |KSPACE|^2 over each plane across axis a (all other axes
%   and all volumes), in KSPACE's class, relative to the largest magnitude so
%   that data at any scale give the same profile.
  sizes = [size(kspace), 1, 1];
  peak = max(abs(kspace(:)));
  power = reshape(abs(kspace / max(peak, realmin(class(kspace)))).^2, [sizes(1:3), prod(sizes(4:end))]);
  profiles = cell(1, 3);
  for axis = 1:3
    e = power;
    for other = setdiff(1:4, axis)
      e = sum(e, other);
    end
    profiles{axis} = double(e(:));
  end
end
