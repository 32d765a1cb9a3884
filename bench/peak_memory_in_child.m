function mebibytes = peak_memory_in_child(data_file, setup, call, outputs)
%PEAK_MEMORY_IN_CHILD  Peak memory of one call, measured in a fresh Octave process.
%
%   MEBIBYTES = PEAK_MEMORY_IN_CHILD(DATA_FILE, SETUP, CALL, OUTPUTS) starts
%   a new octave-cli with this session's homodyne_recon, homodyne_mex and
%   bench folders on its path, loads DATA_FILE (a MAT-file), runs the
%   statements SETUP (a warm-up on small data, so that loading the MEX and
%   planning FFTs do not count) and measures the expression CALL, keeping
%   OUTPUTS of its outputs, with PEAK_CALL_MEMORY: the peak resident memory
%   during the call above the resident memory just before it, in MiB.
%   A fresh process has not yet freed and kept memory that the call could
%   reuse unseen, so the figure is the call's own. Linux only.
%   SETUP and CALL are code text without double quotes.
%
%   Example:
%     mib = peak_memory_in_child(file, '', 'homodyne_recon(kspace)', 1);
%
%   See also PEAK_CALL_MEMORY.

  code = [setup call];
  if any(code == '"')
    error('peak_memory_in_child: SETUP and CALL must not hold double quotes.');
  end
  % addpath puts each folder first, so the MEX folder goes in after the
  % folder of its help file, which may hold another build of the module.
  folders = {fileparts(which('homodyne_recon')), fileparts(which('homodyne_mex')), fileparts(mfilename('fullpath'))};
  paths = sprintf('addpath(''%s''); ', folders{:});
  script = sprintf('%s load(''%s''); %s fprintf(''peak_mib=%%.6f\\n'', peak_call_memory(@() %s, %d));', ...
                   paths, data_file, setup, call, outputs);
  [status, output] = system(sprintf('"%s" --no-gui --quiet --norc --eval "%s"', octave_cli(), script));
  value = regexp(output, 'peak_mib=([0-9.eE+-]+)', 'tokens', 'once');
  if status ~= 0 || isempty(value)
    error('peak_memory_in_child: the child process failed:\n%s', output);
  end
  mebibytes = str2double(value{1});
end

% The octave-cli of the running Octave (the one on the PATH under MATLAB).
function exe = octave_cli()
  exe = 'octave-cli';
  if exist('OCTAVE_HOME', 'builtin') ~= 0
    candidate = fullfile(OCTAVE_HOME(), 'bin', 'octave-cli');
    if exist(candidate, 'file') == 2
      exe = candidate;
    end
  end
end
