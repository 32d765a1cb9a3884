function cases = test_hostile_inputs()
%TEST_HOSTILE_INPUTS  Hostile calls (see HOSTILE_BATCH) must succeed or raise an error of
%   homodyne_mex that leaves the inputs alone; child processes count crashes.
  cases = {
    'adversarial_calls', @(layout) sweep_in_children('hostile_batch', 'adversarial', 1, at_least_500(hostile_batch('adversarial', 1)))
    'random_calls', @(layout) sweep_in_children('hostile_batch', 'random', 7, 600)
  };
end

function count = at_least_500(count)
  assert(count >= 500, 'a sweep of only %d calls', count);
end
