function expect_error(message, fn)
%EXPECT_ERROR  Assert that FN() raises exactly MESSAGE from homodyne_mex.
%   The host prefixes the module's errors with 'homodyne_mex: '.
  try
    fn();
  catch err
    expected = ['homodyne_mex: ' message];
    if ~strcmp(err.message, expected)
      error('expected error "%s", got "%s"', expected, err.message);
    end
    return;
  end
  error('expected error "%s", but the call succeeded', message);
end
