function ranges = partial_fourier_ranges(wrapper, fractions, sizes)
%PARTIAL_FOURIER_RANGES  Sampled ranges from partial-Fourier fractions as scan protocols state them.
%   RANGES = PARTIAL_FOURIER_RANGES(WRAPPER, FRACTIONS, SIZES): FRACTIONS is a
%   cell of up to three entries, [] (fully sampled) or the acquired fraction
%   f of the axis, 0.5 <= |f| <= 1 (5/8, 6/8, 7/8, ...). A positive f misses
%   the negative end of k (the lines acquired last are kept, the usual
%   case), a negative f the positive end. An axis of n samples keeps
%   n - floor((1 - |f|) n) planes: a fractional line counts as acquired.
  names = 'xyz';
  ranges = cell(1, 3);
  for axis = 1:numel(fractions)
    f = fractions{axis};
    if isnumeric(f) && isempty(f)
      continue;
    end
    if ~isnumeric(f) || ~isreal(f) || ~isscalar(f) || ~isfinite(f) || abs(f) < 0.5 || abs(f) > 1
      homodyne_error(wrapper, 'badOption', ['''PartialFourier'' %s entry must be [] or a fraction from 0.5 to 1 ' ...
                     '(negative: the positive end is missing), not %s.'], names(axis), value_text(f));
    end
    n = sizes(axis);
    missing = floor((1 - abs(double(f))) * n + 1e-9);
    if f > 0
      ranges{axis} = [missing - floor(n / 2), ceil(n / 2) - 1];
    else
      ranges{axis} = [-floor(n / 2), ceil(n / 2) - 1 - missing];
    end
  end
end

function text = value_text(f)
  if isnumeric(f) && isreal(f) && isscalar(f)
    text = num2str(double(f));
  else
    text = sprintf('a %s %s', class(f), size_text(f));
  end
end
