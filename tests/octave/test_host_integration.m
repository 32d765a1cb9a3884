function cases = test_host_integration()
%TEST_HOST_INTEGRATION  How results reach the caller in each MEX layout: complex
%   data read in place (interleaved only), and a whole complex output.
  cases = {
    'weighted_in_place_and_shared', @weighted_in_place_and_shared
    'large_complex_output_is_whole', @large_complex_output_is_whole
  };
end

% The command writes into its input's storage, which every sharer sees (the
% documented caveat); the separate layout gets a private copy of complex planes.
function weighted_in_place_and_shared(layout)
  weights = single([0 0 0 0.75 1 1.25 2 2]');
  for data = {ones(8, 2, 'single'), complex(ones(8, 1, 'single'), 2 * ones(8, 1, 'single'))}
    work = unshare(data{1});
    sharer = work;
    homodyne_mex('filter', work, [-2 3.5], [], []);
    expected = data{1};
    if ~iscomplex(expected) || strcmp(layout, 'interleaved')
      expected = expected .* repmat(weights, 1, size(expected, 2));
    end
    assert(isequal(work, expected) && isequal(sharer, expected), 'complex data %d', iscomplex(expected));
  end
end

% Every value of a large block is written; a half-allocated output would
% corrupt the heap or lose values.
function large_complex_output_is_whole(layout)
  data = complex(single(reshape(1:64 * 64 * 16, 64, 64, 16)), single(-1));
  out = homodyne_mex('filter', data, [], [], []);
  assert(isequal(out, data));
  out = homodyne_mex('filter', real(data), [], [], []);
  assert(isequal(out, real(data)) && iscomplex(out) == strcmp(layout, 'interleaved'));
end
