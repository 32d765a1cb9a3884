function layout = coil_layout(wrapper, sizes, coils, dims)
%COIL_LAYOUT  Where the spatial axes, the coils and the volumes of KSPACE lie.
%   LAYOUT = COIL_LAYOUT(WRAPPER, SIZES, COILS, DIMS): SIZES = size(KSPACE),
%   COILS the dimension holding the receive coils ([] for none), DIMS the
%   number of spatial dimensions (2 or 3; [] for 3, or 2 when COILS is 3).
%   The core reads the order (x, y, z, coils, volumes):
%     LAYOUT.perm       permutation of KSPACE's dimensions into that order;
%     LAYOUT.canonical  the 5 sizes after it (z = 1 for 2-D data);
%     LAYOUT.permuted   KSPACE's sizes after the permutation;
%     LAYOUT.result     the same for a result: 1 along the coils;
%     LAYOUT.coils      the coil count (1 without COILS).
%   A COILS that is not a whole number from 3 to ndims, or that lies among
%   the spatial dimensions, is refused (homodyne:badOption).
  nd = numel(sizes);
  if isempty(dims)
    dims = 3 - isequal(coils, 3);
  end
  if ~isempty(coils)
    if coils ~= round(coils) || coils < 3 || coils > nd
      homodyne_error(wrapper, 'badOption', ['''Coils'' must be a whole number from 3 to ndims(KSPACE) = %d ' ...
                     '(the dimension that holds the receive coils).'], nd);
    elseif coils <= dims
      homodyne_error(wrapper, 'badOption', ['''Coils'', %d lies among the %d spatial dimensions; ' ...
                     'give ''Dims'', 2 for 2-D data.'], coils, dims);
    end
  end
  sizes = [sizes, ones(1, max(0, dims - nd))];
  nd = numel(sizes);
  volumes = setdiff(dims + 1:nd, coils);
  layout.perm = [1:dims, coils, volumes];
  spatial = [sizes(1:dims), ones(1, 3 - dims)];
  layout.coils = prod(sizes(coils));
  layout.canonical = [spatial, layout.coils, prod(sizes(volumes))];
  layout.permuted = sizes(layout.perm);
  layout.result = layout.permuted;
  if ~isempty(coils)
    layout.result(dims + 1) = 1;
  end
end
