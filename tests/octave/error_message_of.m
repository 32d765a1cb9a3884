function message = error_message_of(fn)
%ERROR_MESSAGE_OF  The message of the error that FN() raises, or '' if none.
  message = '';
  try
    fn();
  catch err
    message = err.message;
  end
end
