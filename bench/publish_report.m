function publish_report(report, results_file)
%PUBLISH_REPORT  Print a markdown report and write it to RESULTS_FILE (its folder made if need be).
  fprintf('%s', report);
  folder = fileparts(results_file);
  if ~isempty(folder) && exist(folder, 'dir') ~= 7
    mkdir(folder);
  end
  fid = fopen(results_file, 'w');
  fprintf(fid, '%s', report);
  fclose(fid);
  fprintf('Written to %s\n', results_file);
end
