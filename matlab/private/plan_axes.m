function plan = plan_axes(wrapper, ranges, labels, sizes, least_fraction)
%PLAN_AXES  Check the sampled ranges of the first three axes; plan how homodyne_mex weights them.
%   PLAN = PLAN_AXES(WRAPPER, RANGES, LABELS, SIZES): RANGES is a 1x3 cell of
%   [] or [first last] in k coordinates (k = 0 at index floor(n/2)+1), LABELS
%   names each range in messages, SIZES holds the three axis sizes. The one
%   rule of the toolbox:
%   - a range is [] or two finite whole numbers of any real numeric class,
%     first <= last, within the axis k = -floor(n/2) .. ceil(n/2)-1
%     (homodyne:badRange);
%   - an axis on which at most one sampled plane lacks its mirror (k -> -k)
%     counts as fully sampled: it is left whole and not weighted;
%   - any other range must contain k = 0 and cover at least LEAST_FRACTION
%     of its symmetric extent (homodyne:sampling); by default 0.55, the
%     module's own limit; POCS, which needs no weighting, passes 0.
%   The module weights only axes whose missing part lies at the negative end;
%   an axis missing its positive end is planned mirrored (k -> -k, where
%   -n/2 of an even axis has no mirror).
%   PLAN.ranges     the ranges as given, as doubles;
%   PLAN.mex_ranges what homodyne_mex gets, in mirrored coordinates where
%                   PLAN.mirrored, [] for an axis left whole;
%   PLAN.mirrored, PLAN.weighted  1x3 logical.
  if nargin < 5
    least_fraction = 0.55;
  end
  plan.ranges = cell(1, 3);
  plan.mex_ranges = cell(1, 3);
  plan.mirrored = false(1, 3);
  for axis = 1:3
    r = ranges{axis};
    if isnumeric(r) && isempty(r)
      continue;
    end
    if ~isnumeric(r) || ~isreal(r) || numel(r) ~= 2
      homodyne_error(wrapper, 'badRange', '%s must be [] or [first last] in k coordinates, not a %s %s.', ...
                     labels{axis}, class_text(r), size_text(r));
    end
    r = double(full(r(:)'));
    text = mat2str(r);
    n = sizes(axis);
    [lowest, highest] = deal(-floor(n / 2), ceil(n / 2) - 1);
    if any(~isfinite(r)) || any(r ~= round(r))
      homodyne_error(wrapper, 'badRange', '%s %s must hold two finite whole k coordinates.', labels{axis}, text);
    elseif r(1) > r(2)
      homodyne_error(wrapper, 'badRange', '%s %s must be ordered, first <= last.', labels{axis}, text);
    elseif r(1) < lowest || r(2) > highest
      homodyne_error(wrapper, 'badRange', '%s %s lies outside the axis of %d samples, k = %d .. %d.', ...
                     labels{axis}, text, n, lowest, highest);
    elseif r(1) > 0 || r(2) < 0
      homodyne_error(wrapper, 'sampling', '%s %s does not contain k = 0; homodyne reconstruction needs the centre of k-space.', ...
                     labels{axis}, text);
    end
    plan.ranges{axis} = r;
    mirrored = r(1) + r(2) < 0;
    if mirrored
      r = [-r(2), min(-r(1), highest)];
    end
    if r(1) + r(2) <= 1
      continue;   % at most one unpaired plane: nothing to weight
    end
    % The module's acceptance test, in its own precision.
    fraction = single(r(2) - r(1) + 1) / single(2 * r(2) + 1);
    if double(fraction) < least_fraction
      homodyne_error(wrapper, 'sampling', ['%s %s covers %.0f %% of its symmetric extent around k = 0; ' ...
                     'homodyne reconstruction needs at least 55 %%.'], labels{axis}, text, 100 * fraction);
    end
    plan.mirrored(axis) = mirrored;
    plan.mex_ranges{axis} = r;
  end
  plan.weighted = ~cellfun(@isempty, plan.mex_ranges);
end

function text = class_text(x)
  text = class(x);
  if isnumeric(x) && ~isreal(x)
    text = ['complex ' text];
  end
end
