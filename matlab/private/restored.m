function y = restored(wrapper, name, y, scale, class_name, is_complex)
%RESTORED  A result of the module at its caller's scale, class and complexity.
%   Y = RESTORED(WRAPPER, NAME, Y, SCALE, CLASS_NAME, IS_COMPLEX) multiplies
%   the single result Y (computed at unit scale, see WORKING_COPY) by SCALE
%   in CLASS_NAME and makes it complex when IS_COMPLEX (the host drops an
%   all-zero imaginary part on arithmetic). A result beyond the range of
%   CLASS_NAME, or wholly below its normal range, where it would come back
%   as Inf or as zeros and digits lost, is refused (homodyne:scale).
  if scale == 1
    y = cast(y, class_name);   % data at unit scale
  else
    unit = y;
    y = cast(unit, class_name) * cast(scale, class_name);
    if iscomplex(y)
      largest = max(abs(y(:)));
    else
      largest = norm(y(:), Inf);   % max(abs(.)) in one pass
    end
    if isinf(largest) || (largest < realmin(class_name) && any(unit(:) ~= 0))
      advice = 'scale the data';
      if strcmp(class_name, 'single')
        advice = 'pass the data as double';
      end
      homodyne_error(wrapper, 'scale', ['%s does not fit %s precision at the scale of the data ' ...
                     '(largest magnitude about %.3g); %s.'], name, class_name, scale, advice);
    end
  end
  if is_complex && ~iscomplex(y)
    y = complex(y);
  end
end
