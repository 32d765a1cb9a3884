function status = run_octave_tests(test_name, layout)
%RUN_OCTAVE_TESTS  Run the cases of one test file against one MEX layout.
%   STATUS = RUN_OCTAVE_TESTS(TEST_NAME, LAYOUT) calls TEST_NAME(), which returns
%   a cell array of {case_name, @(layout) ...} pairs, runs every case with
%   LAYOUT ('interleaved' or 'separate'), prints one line per case and a closing
%   'N passed, N failed' line, and returns 0 when every case passed, else 1.

  cases = feval(test_name);
  passed = 0;
  failed = 0;
  for k = 1:size(cases, 1)
    name = cases{k, 1};
    try
      cases{k, 2}(layout);
      passed = passed + 1;
      fprintf('PASS %s.%s [%s]\n', test_name, name, layout);
    catch err
      failed = failed + 1;
      fprintf('FAIL %s.%s [%s]: %s\n', test_name, name, layout, err.message);
    end
  end
  fprintf('%d passed, %d failed\n', passed, failed);
  status = double(failed > 0);
end
