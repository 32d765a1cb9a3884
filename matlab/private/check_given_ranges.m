function detection = check_given_ranges(wrapper, ranges, labels, sizes, profiles)
%CHECK_GIVEN_RANGES  Refuse given sampled ranges that the data contradict.
%   DETECTION = CHECK_GIVEN_RANGES(WRAPPER, RANGES, LABELS, SIZES, PROFILES):
%   RANGES (1x3 cell, already checked by PLAN_AXES) as the caller gave them,
%   LABELS naming each, SIZES the three axis sizes, PROFILES the plane
%   energies of the data (PLANE_ENERGY). Per axis with a range [first last]:
%   - planes outside the range that carry data (their energy at least 0.6
%     of that of their mirror planes k -> -k inside the range): a range on
%     the wrong axis or too narrow, homodyne:badRange (measured: 0.96 for a
%     y range given as x). Planes outside that hold only noise or filler are
%     treated as not acquired (measured on phantoms with the unacquired
%     lines of 5/8 to 7/8 holding noise: at most 0.017 of their mirrors'
%     energy at SNR 20, 0.44 at SNR 3);
%   - all-zero planes at an end of the range, other than the unpaired plane
%     -n/2 of an even axis: a range wider than the data, homodyne:badRange
%     (those zeros would be taken as measured). For an axis given as [],
%     all-zero planes at one end that outnumber those at the other by two
%     or more (the unpaired plane aside): lines not acquired, not padding.
%   DETECTION is a 1x3 struct array as DETECT_RANGES gives it, method 'given'
%   and ratio the energy of the planes outside relative to their mirrors.
  names = 'xyz';
  detection = struct('axis', num2cell(names), 'method', 'given', 'range', ranges, 'ratio', 0, 'one_sided', false);
  for axis = 1:3
    r = ranges{axis};
    energy = profiles{axis};
    n = sizes(axis);
    if isempty(r)
      refuse_one_sided_zeros(wrapper, labels{axis}, names(axis), energy, n);
      continue;
    end
    r = double(full(r(:)'));
    centre = floor(n / 2) + 1;
    inside = r(1) + centre:r(2) + centre;
    outside = setdiff(1:n, inside);
    partners = 2 * centre - outside;
    mirrored = partners >= 1 & partners <= n;
    ratio = sum(energy(outside)) / max(sum(energy(partners(mirrored))), realmin);
    if isempty(outside)
      ratio = 0;
    end
    detection(axis).ratio = ratio;
    held = find(energy(inside) > 0);
    text = mat2str(r);
    if ratio >= 0.6 && any(energy(outside) > 0)
      homodyne_error(wrapper, 'badRange', ['%s %s leaves out planes that hold data (%.2g of the energy of ' ...
                     'their mirror planes inside the range): is it the range of another axis, or too narrow?'], ...
                     labels{axis}, text, ratio);
    elseif isempty(held)
      homodyne_error(wrapper, 'badRange', '%s %s holds only zeros.', labels{axis}, text);
    end
    first = r(1) + held(1) - 1;
    last = r(1) + held(end) - 1;
    if last < r(2) || first > r(1) + (r(1) == -n / 2)
      homodyne_error(wrapper, 'badRange', ['%s %s is wider than the data along %s: the planes from k = %d to %d ' ...
                     'hold data, the rest of the range only zeros, which would be taken as measured.'], ...
                     labels{axis}, text, names(axis), first, last);
    end
  end
end

function refuse_one_sided_zeros(wrapper, label, name, energy, n)
  held = find(energy > 0);
  if isempty(held)
    return;
  end
  low = held(1) - 1 - (held(1) > 1 && mod(n, 2) == 0);   % the unpaired plane -n/2 aside
  high = n - held(end);
  if abs(low - high) >= 2
    k = held([1 end]) - 1 - floor(n / 2);
    homodyne_error(wrapper, 'badRange', ['%s [] takes the axis as fully sampled, but only the planes ' ...
                   'from k = %d to %d along %s hold data; give their range [%d %d].'], label, k(1), k(2), name, k(1), k(2));
  end
end
