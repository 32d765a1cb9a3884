function warn_if_z_volumes(wrapper, profiles, z_partial)
%WARN_IF_Z_VOLUMES  Warn when the third axis of k-space looks like coils or slices.
%   WARN_IF_Z_VOLUMES(WRAPPER, PROFILES, Z_PARTIAL): PROFILES are the plane
%   energies of the data (PLANE_ENERGY), Z_PARTIAL whether z is partially
%   sampled (a partial axis is k-space by construction). The
%   k-space of an object has its energy peak at k = 0; 2-D images of coils
%   or slices stacked along dimension 3 have no k-space centre there. The
%   rule: 4 to 32 planes along z, z fully sampled, x and y each with a plane
%   within |k| <= n/8 of their centre (coil phase and echo shifts move the
%   peak) holding at least 4x their median plane, and no z plane within
%   |kz| <= floor(nz/8) holding 1.8x the median z plane. Measured on
%   phantoms (64 x 64 x 4 to 32): true 3-D k-space 2.5-24x with its peak at
%   kz = 0, 3.8-24x with the peak moved by up to nz/8 planes (nz >= 8);
%   stacked slice k-spaces 1.25-1.28x, stacked coil k-spaces with random
%   gains 0.97-1.45x (1.81x at 4 coils: missed); x and y of all of them
%   38-45x (3.8x at kx = 0 itself for coils with phase ramps of up to
%   8 rad). With 2 or 3 planes the two cannot be told apart.
  nz = numel(profiles{3});
  if nz < 4 || nz > 32 || z_partial
    return;
  end
  if central_peak(profiles{1}, 1 / 8) >= 4 && central_peak(profiles{2}, 1 / 8) >= 4 && central_peak(profiles{3}, 1 / 8) < 1.8
    warning('homodyne:zLooksLikeVolumes', ['%s: dimension 3 (%d planes) looks like coils or slices, not kz: ' ...
            'its central planes hold at most %.2g times the median plane, where a k-space centre holds far more. A 3-D ' ...
            'transform across it mixes them; pass ''Dims'', 2 (slices) or ''Coils'', 3 (coils).'], ...
            wrapper, nz, central_peak(profiles{3}, 1 / 8));
  end
end

% The largest plane within |k| <= WIDTH * n of the centre, relative to the median plane.
function ratio = central_peak(energy, width)
  n = numel(energy);
  centre = floor(n / 2) + 1;
  near = max(1, centre - floor(width * n)):min(n, centre + floor(width * n));
  ratio = max(energy(near)) / max(median(energy), realmin);
end
