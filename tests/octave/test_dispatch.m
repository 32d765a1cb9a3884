function cases = test_dispatch()
%TEST_DISPATCH  The command text: its errors, exact matching, silent unknown commands.
  cases = {
    'non_text_first_input', @non_text_first_input
    'unknown_commands_do_nothing', @unknown_commands_do_nothing
    'filter_reached_with_exact_text', @filter_reached_with_exact_text
  };
end

function non_text_first_input(~)
  message = 'The first input must be a string describing the functionality.';
  expect_error(message, @() homodyne_mex(1, single(1), [], [], []));
  expect_error(message, @() homodyne_mex({'filter'}, single(1), [], [], []));
  expect_error(message, @() homodyne_mex(single('f')));
  expect_error(message, @() homodyne_mex());
end

function unknown_commands_do_nothing(~)
  data = single([1 2 3 4]');
  for command = {'Filter', 'FILTER', ' filter', 'filter ', 'filt', '', 'filterx', 'Multiply', 'multiply '}
    copy = data;
    homodyne_mex(command{1}, copy, [-1 3], [], []);
    assert(isequal(copy, data), 'command "%s" changed the data', command{1});
  end
  % Nothing is returned either: asking for an output is an error of the host.
  failed = false;
  try
    out = homodyne_mex('Filter', data, [], [], []); %#ok<NASGU>
  catch
    failed = true;
  end
  assert(failed, 'an unknown command returned a value');
end

% A multi-row char array is read column by column: ['fle';'itr'] is 'filter'.
function filter_reached_with_exact_text(~)
  assert(isequal(homodyne_mex('filter', single([1 2 3 4]'), [], [], []), single([1 2 3 4]')));
  assert(isequal(homodyne_mex(['fle'; 'itr'], single([5 6]'), [], [], []), single([5 6]')));
end
