function mebibytes = peak_call_memory(fn, outputs)
%PEAK_CALL_MEMORY  Resident memory that one call adds to this process at its peak (Linux).
%
%   MEBIBYTES = PEAK_CALL_MEMORY(FN, OUTPUTS) calls FN() once, keeping its
%   first OUTPUTS outputs (0 or more) until the peak has been read, and
%   returns the process's peak resident set size during the call minus its
%   resident set size just before, in MiB. The kernel's peak mark (VmHWM in
%   /proc/self/status) is reset first by writing 5 to /proc/self/clear_refs,
%   so that peaks from before the call do not hide the call's own.
%
%   Memory that the process freed earlier but still holds can be reused by
%   the call without showing here, so run it in a fresh process after
%   loading the inputs (see PEAK_MEMORY_IN_CHILD).
%
%   See also PEAK_MEMORY_IN_CHILD.

  results = cell(1, outputs);
  fid = fopen('/proc/self/clear_refs', 'w');
  if fid < 0
    error('peak_call_memory: cannot reset the peak mark in /proc/self/clear_refs.');
  end
  fprintf(fid, '5');
  fclose(fid);
  before = status_kib('VmRSS');
  [results{:}] = fn();
  mebibytes = (status_kib('VmHWM') - before) / 1024;
end

% One "Name:  value kB" entry of /proc/self/status, in KiB.
function kib = status_kib(name)
  status = fileread('/proc/self/status');
  value = regexp(status, [name ':\s*(\d+) kB'], 'tokens', 'once');
  kib = str2double(value{1});
end
