function layout = mex_layout()
%MEX_LAYOUT  The complex layout that the loaded homodyne_mex was built for.
%   LAYOUT = MEX_LAYOUT() returns 'interleaved' or 'separate'. Only the
%   interleaved build writes into the caller's storage of a complex array;
%   the separate build is handed a private copy of complex planes, so its
%   in-place results for complex data never arrive. Weighting a small fresh
%   complex probe tells the two apart: its first weight is 0. The answer is
%   kept for the module file that gave it (path and modification time), so a
%   module rebuilt for the other layout in the same session, or another one
%   put first on the path, is probed afresh.
  persistent known_module known_time known_layout
  handle = functions(@homodyne_mex);
  module = handle.file;
  time = modification_time(module);
  if ~(strcmp(module, known_module) && time == known_time)
    probe = complex(ones(8, 1, 'single'), ones(8, 1, 'single'));
    homodyne_mex('filter', probe, [-1 3], [], []);
    known_layout = 'separate';
    if probe(1) == 0
      known_layout = 'interleaved';
    end
    [known_module, known_time] = deal(module, time);
  end
  layout = known_layout;
end

% Octave's stat takes microseconds where dir takes a millisecond; MATLAB has dir only.
function t = modification_time(file)
  if exist('stat', 'builtin')
    listing = stat(file);
    t = listing.mtime;
  else
    listing = dir(file);
    t = listing.datenum;
  end
end
