function smoke_homodyne_package()
%SMOKE_HOMODYNE_PACKAGE  Check an installed and loaded homodyne package; error on any fault.
%
%   After `pkg install homodyne-<version>.tar.gz` and `pkg load homodyne`:
%   every M-file and MEX module of the package is found on the path (the
%   MEX modules as MEX files, not shadowed by their help files), and the
%   demo phantom with 3/8 of its ky planes missing is reconstructed by
%   homodyne_recon with an error well below zero filling's.

  installed = pkg('list', 'homodyne');
  if isempty(installed) || ~installed{1}.loaded
    error('smoke_homodyne_package: the homodyne package is not installed and loaded.');
  end
  folder = installed{1}.dir;
  functions = dir(fullfile(folder, '*.m'));
  for f = {functions.name}
    name = f{1}(1:end - 2);
    if ~any(exist(name) == [2 3])  %#ok<EXIST> the kind of file is what is checked
      error('smoke_homodyne_package: %s is not on the path after pkg load.', name);
    end
  end
  modules = [];
  for arch_folder = strsplit(genpath(installed{1}.archprefix), pathsep())
    modules = [modules; dir(fullfile(arch_folder{1}, '*.mex'))];  %#ok<AGROW>
  end
  if isempty(modules)
    error('smoke_homodyne_package: pkg install built no MEX module into %s.', installed{1}.archprefix);
  end
  for m = {modules.name}
    name = m{1}(1:end - 4);
    if exist(name) ~= 3  %#ok<EXIST>
      error('smoke_homodyne_package: %s does not resolve to its MEX file.', name);
    end
  end

  sizes = [128 128 32];
  [image, kspace] = homodyne_phantom(sizes);
  kspace(:, 1:sizes(2) * 3 / 8, :) = 0;
  [recon, ~, zero_filled] = homodyne_recon(kspace);
  reference = double(abs(image(:)));
  error_of = @(x) norm(double(abs(x(:))) - reference) / norm(reference);
  if ~(error_of(recon) < 0.05 && error_of(recon) < error_of(zero_filled) / 4)
    error('smoke_homodyne_package: homodyne_recon NRMSE %.4f (zero filled %.4f).', ...
          error_of(recon), error_of(zero_filled));
  end
  fprintf('homodyne %s: %d functions, %d MEX modules; phantom NRMSE %.4f (zero filled %.4f)\n', ...
          installed{1}.version, numel(functions), numel(modules), error_of(recon), error_of(zero_filled));
end
