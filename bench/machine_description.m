function machine = machine_description()
%MACHINE_DESCRIPTION  One line naming the CPU, its core count and the Octave and BART versions.
%
%   MACHINE = MACHINE_DESCRIPTION() returns text such as
%   'AMD EPYC (2 cores, `nproc`), GNU Octave 7.3.0, BART v0.8.00' for the
%   headers of the benchmark reports. nproc runs without the OpenMP
%   variables, which it obeys and which the benchmarks set to one thread.
%
%   See also RUN_BENCHMARKS, COMPARE_BART.

  [~, cpu] = system('grep -m1 "model name" /proc/cpuinfo');
  [~, cores] = system('env -u OMP_NUM_THREADS -u OMP_THREAD_LIMIT nproc');
  [~, bart_version] = system('bart version');
  machine = sprintf('%s (%s cores, `nproc`), GNU Octave %s, BART %s', strtrim(regexprep(cpu, '.*:', '')), ...
                    strtrim(cores), version(), strtrim(bart_version));
end
