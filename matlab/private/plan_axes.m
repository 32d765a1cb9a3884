function [mex_ranges, mirrored] = plan_axes(ranges, sizes)
%PLAN_AXES  How each of the first three axes is handed to homodyne_mex.
%   [MEX_RANGES, MIRRORED] = PLAN_AXES(RANGES, SIZES) takes the sampled range
%   of each axis (1x3 cell of [] or [first last] in k coordinates) and the
%   axis sizes (1x3). An axis with [] or |first + last| <= 1 is fully sampled:
%   its MEX range is [], so it stays whole and unweighted. The module weights
%   only axes whose missing part lies at the negative end; an axis missing
%   its positive end is marked in MIRRORED (1x3 logical) and gets the range
%   of the mirrored axis (k -> -k), where -n/2 of an even axis has no mirror.
%   Ranges outside the axis, without k = 0, or covering less than 55 % of
%   their symmetric extent (the module's limit) are refused here with a clear
%   message, since the module would silently collapse such an axis.
  names = 'xyz';
  mex_ranges = {[], [], []};
  mirrored = false(1, 3);
  for axis = 1:3
    r = ranges{axis};
    if isempty(r)
      continue;
    end
    n = sizes(axis);
    lowest = -floor(n / 2);
    highest = ceil(n / 2) - 1;
    if ~isnumeric(r) || ~isreal(r) || numel(r) ~= 2 || any(~isfinite(r)) || any(r ~= round(r))
      error('homodyne_recon: the %s range must be [] or [first last] in whole k coordinates.', names(axis));
    end
    r = double(r(:)');
    if r(1) > r(2) || r(1) < lowest || r(2) > highest
      error('homodyne_recon: the %s range [%d %d] must be ordered and lie within the axis, k = %d .. %d.', ...
            names(axis), r(1), r(2), lowest, highest);
    end
    if abs(r(1) + r(2)) <= 1
      continue;
    end
    mirrored(axis) = r(1) + r(2) < 0;
    if mirrored(axis)
      r = [-r(2), min(-r(1), highest)];
    end
    fraction = single(r(2) - r(1) + 1) / single(2 * r(2) + 1);
    if r(1) > 0 || fraction < 0.55
      error(['homodyne_recon: the %s range [%d %d] covers %.0f %% of its symmetric extent ' ...
             'around k = 0; homodyne reconstruction needs k = 0 and at least 55 %%.'], ...
            names(axis), ranges{axis}(1), ranges{axis}(2), 100 * max(fraction, 0));
    end
    mex_ranges{axis} = r;
  end
end
