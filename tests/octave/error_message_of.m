function [message, identifier] = error_message_of(fn)
%ERROR_MESSAGE_OF  The message and identifier of the error that FN() raises, or '' if none.
  [message, identifier] = deal('');
  try
    fn();
  catch err
    [message, identifier] = deal(err.message, err.identifier);
  end
end
