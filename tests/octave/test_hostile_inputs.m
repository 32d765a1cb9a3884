function cases = test_hostile_inputs()
%TEST_HOSTILE_INPUTS  Hostile calls of homodyne_mex (see HOSTILE_BATCH) and of the
%   toolbox's wrappers (see TOOLBOX_BATCH) in child processes: no crash, a result or a
%   clean error, inputs unchanged.
  cases = {
    'module_calls', @(layout) sweep_in_children('hostile_batch')
    'toolbox_calls', @(layout) sweep_in_children('toolbox_batch')
  };
end
