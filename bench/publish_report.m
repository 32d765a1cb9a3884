function publish_report(report, results_file)
%PUBLISH_REPORT  Print a markdown report and write it to RESULTS_FILE.
  fprintf('%s', report);
  fid = fopen(results_file, 'w');
  fprintf(fid, '%s', report);
  fclose(fid);
  fprintf('Written to %s\n', results_file);
end
