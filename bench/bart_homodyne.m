function img = bart_homodyne(k, ranges)
%BART_HOMODYNE  The magnitude image of `bart homodyne` on centred k-space K with sampled RANGES {KX, KY, KZ}.
% bart homodyne from memory (octave-bart), one call per partial axis, the
% second on the image of the first; bart wants the acquired part at the
% low-index end (axes missing their negative end are mirrored for it) and a
% fraction counting samples; its unitary FFT scale is divided out.
  mirrored = [];
  commands = {};
  for axis = 1:3
    r = ranges{axis};
    if isempty(r)
      continue;
    end
    n = size(k, axis);
    if r(1) + r(2) > 0
      mirrored(end + 1) = axis;
      r = [-r(2), -r(1)];
    end
    fraction = (r(2) + floor(n / 2) + 1) / n;
    image_input = '';
    if ~isempty(commands)
      image_input = '-I ';
    end
    commands{end + 1} = sprintf('homodyne %s%d %.6f', image_input, axis - 1, fraction);
  end
  for axis = mirrored
    k = mirror_k(k, axis);
  end
  img = k;
  for c = 1:numel(commands)
    img = bart(commands{c}, img);
  end
  img = abs(img) / sqrt(numel(k));
  for axis = mirrored
    img = mirror_k(img, axis);
  end
end

