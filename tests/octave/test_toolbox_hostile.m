function cases = test_toolbox_hostile()
%TEST_TOOLBOX_HOSTILE  Hostile and unusual calls of homodyne_recon, homodyne_filter,
%   homodyne_phase and homodyne_phantom (see TOOLBOX_BATCH), each layout in child
%   processes: no crash, the right result or a clean error of the expected kind,
%   inputs unchanged, no NaN or Inf from finite input.
  cases = {
    'named_calls', @(layout) sweep_in_children('toolbox_batch', 'named', 1, toolbox_batch('named', 1))
    'random_calls', @(layout) sweep_in_children('toolbox_batch', 'random', 11, 300)
  };
end
