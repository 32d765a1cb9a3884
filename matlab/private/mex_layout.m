function layout = mex_layout()
%MEX_LAYOUT  The complex layout that the loaded homodyne_mex was built for.
%   LAYOUT = MEX_LAYOUT() returns 'interleaved' or 'separate'. Only the
%   interleaved build writes into the caller's storage of a complex array;
%   the separate build is handed a private copy of complex planes, so its
%   in-place results for complex data never arrive. Weighting a small fresh
%   complex probe tells the two apart: its first weight is 0. The probe costs
%   microseconds and is made on every call, so a module rebuilt for the other
%   layout in the same session is recognised at once.
  probe = complex(ones(8, 1, 'single'), ones(8, 1, 'single'));
  homodyne_mex('filter', probe, [-1 3], [], []);
  if probe(1) == 0
    layout = 'interleaved';
  else
    layout = 'separate';
  end
end
