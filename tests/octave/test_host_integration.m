function cases = test_host_integration()
%TEST_HOST_INTEGRATION  How results reach the caller in each MEX layout.
%   Each case guards a workaround for the host: reading interleaved complex data
%   through the untyped data pointer, and building the complex output with the
%   host so that it is fully allocated and stays complex.
  cases = {
    'complex_data_weighted_in_place', @complex_data_weighted_in_place
    'real_data_weighted_in_place', @real_data_weighted_in_place
    'large_complex_output_is_whole', @large_complex_output_is_whole
    'shared_copies_change_together', @shared_copies_change_together
  };
end

function complex_data_weighted_in_place(layout)
  data = complex(ones(8, 1, 'single'), 2 * ones(8, 1, 'single'));
  work = unshare(data);
  homodyne_mex('filter', work, [-2 3.5], [], []);
  if strcmp(layout, 'interleaved')
    assert(isequal(work, data .* single([0 0 0 0.75 1 1.25 2 2]')));
  else
    % The host hands this layout a private copy of complex planes.
    assert(isequal(work, data));
  end
end

function real_data_weighted_in_place(~)
  work = unshare(ones(8, 2, 'single'));
  homodyne_mex('filter', work, [-2 3.5], [], []);
  assert(isequal(work, repmat(single([0 0 0 0.75 1 1.25 2 2]'), 1, 2)));
end

function large_complex_output_is_whole(layout)
  % Every value of a large block is written; a half-allocated output would
  % corrupt the heap or lose values.
  data = complex(single(reshape(1:64 * 64 * 16, 64, 64, 16)), single(-1));
  out = homodyne_mex('filter', data, [], [], []);
  assert(isequal(out, data));
  out = homodyne_mex('filter', real(data), [], [], []);
  assert(isequal(out, real(data)));
  assert(iscomplex(out) == strcmp(layout, 'interleaved'));
end

function shared_copies_change_together(layout)
  % The command writes into the storage of its input, which every variable
  % sharing it sees: the documented caveat of in-place results.
  a = ones(8, 1, 'single');
  a(1) = a(1);
  b = a;
  homodyne_mex('filter', b, [-2 3.5], [], []);
  assert(isequal(a, b));
  assert(a(1) == 0);
  c = complex(ones(8, 1, 'single'), 1);
  c(1) = c(1);
  d = c;
  homodyne_mex('filter', d, [-2 3.5], [], []);
  assert(isequal(c, d));
  assert((c(1) == 0) == strcmp(layout, 'interleaved'));
end
