function warn_if_z_volumes(wrapper, profiles, z_partial)
%WARN_IF_Z_VOLUMES  Warn when the third axis of k-space looks like coils or slices.
%   WARN_IF_Z_VOLUMES(WRAPPER, PROFILES, Z_PARTIAL): PROFILES are the plane
%   energies of the data (PLANE_ENERGY), Z_PARTIAL whether z is partially
%   sampled (a partial axis is k-space by construction). The
%   k-space of an object has its energy peak at k = 0; 2-D images of coils
%   or slices stacked along dimension 3 have no k-space centre there. The
%   rule: 4 to 32 planes along z, z fully sampled, x and y each with a plane
%   within |k| <= n/8 of their centre (coil phase moves the peak) holding at
%   least 4x their median plane, and the plane kz = 0 under 1.8x the median
%   z plane. Measured on phantoms (64 x 64 x 4 to 32, clean and at SNR 20):
%   the kz = 0 plane of true 3-D k-space held 2.5-24x the median, of stacked
%   coil or slice k-spaces 0.8-1.25x; x and y of all of them 38-45x (3.8x at
%   kx = 0 itself for coils with phase ramps of up to 8 rad). With 2 or 3
%   planes the two cannot be told apart.
  nz = numel(profiles{3});
  if nz < 4 || nz > 32 || z_partial
    return;
  end
  if central_peak(profiles{1}, 1 / 8) >= 4 && central_peak(profiles{2}, 1 / 8) >= 4 && central_peak(profiles{3}, 0) < 1.8
    warning('homodyne:zLooksLikeVolumes', ['%s: dimension 3 (%d planes) looks like coils or slices, not kz: ' ...
            'its k = 0 plane holds %.2g times the median plane, where a k-space centre holds far more. A 3-D ' ...
            'transform across it mixes them; pass ''Dims'', 2 (slices) or ''Coils'', 3 (coils), or store them ' ...
            'as nx x ny x 1 x n.'], ...
            wrapper, nz, central_peak(profiles{3}, 0));
  end
end

% The largest plane within |k| <= WIDTH * n of the centre, relative to the median plane.
function ratio = central_peak(energy, width)
  n = numel(energy);
  centre = floor(n / 2) + 1;
  near = max(1, centre - floor(width * n)):min(n, centre + floor(width * n));
  ratio = max(energy(near)) / max(median(energy), realmin);
end
