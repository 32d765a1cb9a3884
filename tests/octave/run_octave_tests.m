function status = run_octave_tests(test_name, layout)
%RUN_OCTAVE_TESTS  Run every {case_name, @(layout) ...} row of TEST_NAME() with LAYOUT
%   ('interleaved' or 'separate'), print a line per case; STATUS 0 if all passed, else 1.

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
