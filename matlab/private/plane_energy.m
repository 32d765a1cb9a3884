function profiles = plane_energy(kspace)
%PLANE_ENERGY  Energy of each plane across the first three axes of KSPACE.
%   PROFILES = PLANE_ENERGY(KSPACE) is a 1x3 cell: PROFILES{a} is a column
%   with the sum of |KSPACE|^2 over each plane across axis a (all other axes
%   and all volumes), relative to the largest magnitude so that data at any
%   scale give the same profile (computed in KSPACE's class: in single,
%   samples under 1e-19 of the largest count as zero).
  sizes = [size(kspace), 1, 1];
  power = abs(kspace);
  power = power / max(max(power(:)), realmin(class(kspace)));
  power = sum(reshape(power .* power, [sizes(1:3), prod(sizes(4:end))]), 4);
  profiles = {sum(sum(power, 2), 3), sum(sum(power, 1), 3), sum(sum(power, 1), 2)};
  profiles = cellfun(@(e) double(e(:)), profiles, 'UniformOutput', false);
end
