function e = nrmse(estimate, reference)
%NRMSE  ||ESTIMATE - REFERENCE|| / ||REFERENCE|| over all elements, in double.
  e = norm(double(estimate(:)) - double(reference(:))) / norm(double(reference(:)));
end
