function y = restored(wrapper, name, y, scale, class_name, is_complex)
%RESTORED  A result of the module at its caller's scale, class and complexity.
%   Y = RESTORED(WRAPPER, NAME, Y, SCALE, CLASS_NAME, IS_COMPLEX) multiplies
%   the single result Y (computed at unit scale, see WORKING_COPY) by SCALE
%   in CLASS_NAME and makes it complex when IS_COMPLEX (the host drops an
%   all-zero imaginary part on arithmetic). A single result beyond single
%   precision's range, or wholly below its normal range, where it would come
%   back as Inf or as zeros, is refused (homodyne:scale); double data give it.
  largest = max(abs(y(:)));
  y = cast(y, class_name) * cast(scale, class_name);
  if strcmp(class_name, 'single') && largest > 0
    largest = max(abs(y(:)));
    if isinf(largest) || largest < realmin('single')
      homodyne_error(wrapper, 'scale', ['%s does not fit single precision at the scale of the data ' ...
                     '(largest magnitude about %.3g); pass the data as double.'], name, scale);
    end
  end
  if is_complex && ~iscomplex(y)
    y = complex(y);
  end
end
