function cases = test_read_ismrmrd()
%TEST_READ_ISMRMRD  read_ismrmrd_kspace on files written from a known k-space
%   (by make_scan_file) and by ismrmrd_generate_cartesian_shepp_logan.
  % The helper programs run without a sanitizer runtime that the test host
  % may have preloaded (the library's generator hangs under it).
  unsetenv('LD_PRELOAD');
  cases = {
    'partial_fourier_round_trip_and_recon', @partial_fourier_round_trip_and_recon
    'oversampling_removed_or_kept', @oversampling_removed_or_kept
    'shepp_logan_file_cut_to_partial_fourier', @shepp_logan_file_cut_to_partial_fourier
    'bad_files_and_options', @bad_files_and_options
  };
end

% Writes KSPACE (x y z coils volumes) as raw interleaved float32 and makes an
% ISMRMRD file of it with make_scan_file and OPTIONS.
function path = scan_file(name, kspace, options)
  raw = test_data_file([name '.raw']);
  fid = fopen(raw, 'w');
  fwrite(fid, [real(single(kspace(:))), imag(single(kspace(:)))].', 'float32');
  fclose(fid);
  path = test_data_file([name '.h5']);
  sizes = [size(kspace), ones(1, 5 - ndims(kspace))];
  command = sprintf('"%s" "%s" --kspace "%s" %s %s', getenv('HOMODYNE_MAKE_SCAN_FILE'), path, raw, ...
                    sprintf('%d ', sizes), options);
  [status, output] = system(command);
  assert(status == 0, 'make_scan_file failed: %s', output);
end

function kspace = coil_kspace(sizes, coils)
  [image, ~] = homodyne_phantom(sizes);
  [x, y] = ndgrid(linspace(-1, 1, sizes(1)), linspace(-1, 1, sizes(2)));
  kspace = zeros([sizes, ones(1, 3 - numel(sizes)), coils], 'single');
  for c = 1:coils
    sensitivity = exp(-(x - cos(c)).^2 - (y - sin(c)).^2 + 1i * c * x);
    kspace(:, :, :, c) = fftshift(fftn(ifftshift(image .* sensitivity)));
  end
end

% Ranges at either end and on two axes, noise readouts, and the reconstruction
% of the file equal to that of the k-space that made it.
function partial_fourier_round_trip_and_recon(~)
  full = coil_kspace([32 24 16], 3);
  table = {
    '--keep-y -6 11 --keep-z -5 7 --noise 2', {[], [-6 11], [-5 7]}
    '--keep-y -12 5 --keep-z -8 4', {[], [-12 5], [-8 4]}
  };
  for t = 1:size(table, 1)
    path = scan_file('round_trip', full, table{t, 1});
    [kspace, acq] = read_ismrmrd_kspace(path, 'RemoveOversampling', false);
    expected = zeros(size(full), 'single');
    ky = table{t, 2}{2} + 13;
    kz = table{t, 2}{3} + 9;
    expected(:, ky(1):ky(2), kz(1):kz(2), :) = full(:, ky(1):ky(2), kz(1):kz(2), :);
    assert(isequal(kspace, expected) && isa(kspace, 'single') && iscomplex(kspace), 'k-space of "%s"', table{t, 1});
    assert(isequal(acq.ranges, table{t, 2}) && isequal(acq.matrix, [32 24 16]) && acq.coils == 3);
    assert(isequal(size(acq.noise), [64 3] * ~isempty(strfind(table{t, 1}, 'noise'))));
    assert(isequal(homodyne_recon(kspace, 'Ranges', acq.ranges), homodyne_recon(expected, 'Ranges', table{t, 2})));
    % The struct brings the ranges, the coils and the noise scan at the k-space's noise variance.
    noise = {};
    if ~isempty(acq.noise)
      noise = {'NoiseCovariance', reshape(acq.noise * sqrt(acq.noise_variance_scale), [], 1, 1, 3)};
    end
    assert(isequal(homodyne_recon(kspace, acq), homodyne_recon(expected, 'Ranges', table{t, 2}, 'Coils', 4, noise{:})));
  end
end

% A readout at twice the field of view: cut back to the original samples, or
% kept with its header's field of view.
function oversampling_removed_or_kept(~)
  full = coil_kspace([16 12], 2);
  path = scan_file('oversampled', full, '--oversampling 2');
  [removed, acq] = read_ismrmrd_kspace(path);
  assert(acq.oversampling_removed && max(abs(acq.fov - [200 200 200 / 12])) < 1e-4 && isequal(acq.encoded_matrix, [32 12 1]));
  assert(max(abs(removed(:) - full(:))) < 1e-5 * max(abs(full(:))));
  [kept, acq] = read_ismrmrd_kspace(path, 'RemoveOversampling', false);
  assert(~acq.oversampling_removed && isequal(size(kept), [32 12 1 2]) && acq.fov(1) == 400);
end

% The library's own phantom file: noise scan recognised, then lines dropped
% at the positive end of ky by make_scan_file and found again by the reader.
function shepp_logan_file_cut_to_partial_fourier(~)
  source = test_data_file('shepp_logan.h5');
  [status, output] = system(sprintf('ismrmrd_generate_cartesian_shepp_logan -m 32 -c 4 -C -o "%s"', source));
  assert(status == 0, output);
  [kspace, acq] = read_ismrmrd_kspace(source);
  assert(isequal(size(kspace), [32 32 1 4]) && ~isempty(acq.noise) && acq.noise_variance_scale == 0.5);
  [status, output] = system(sprintf('"%s" "%s" --from "%s" --keep-y -16 5', getenv('HOMODYNE_MAKE_SCAN_FILE'), ...
                                    test_data_file('shepp_logan_pf.h5'), source));
  assert(status == 0, output);
  [full, ~] = read_ismrmrd_kspace(source, 'RemoveOversampling', false);
  [partial, acq] = read_ismrmrd_kspace(test_data_file('shepp_logan_pf.h5'), 'RemoveOversampling', false);
  full(:, 23:end, :, :) = 0;
  assert(isequal(partial, full) && isequal(acq.ranges, {[], [-16 5], []}));
  img = homodyne_recon(partial, 'Ranges', acq.ranges);
  assert(isequal(size(img), [64 32 1 4]) && all(isfinite(img(:))));
end

% Each fault of a file, with its message, is the reader's own unit test; here
% how one reaches the user: the identifier and the function's and file's names.
function bad_files_and_options(~)
  text = test_data_file('text.h5');
  fid = fopen(text, 'w');
  fprintf(fid, 'not HDF5\n');
  fclose(fid);
  message = message_of(@() read_ismrmrd_kspace(text));
  named = ['homodyne:badFile read_ismrmrd_kspace: ' text ': '];
  assert(strncmp(message, named, numel(named)) && ~isempty(strfind(message, 'not an HDF5 file')), 'got "%s"', message);
  assert(~isempty(strfind(message_of(@() read_ismrmrd_kspace(text, 'Oversampling', true)), 'homodyne:badOption read_ismrmrd_kspace: unknown option or arguments')));
  assert(~isempty(strfind(message_of(@() read_ismrmrd_kspace(text, 'RemoveOversampling', 2)), 'homodyne:badOption read_ismrmrd_kspace: ''RemoveOversampling'' must be true or false.')));
  assert(strncmp(message_of(@() read_ismrmrd_kspace(1)), 'homodyne:usage read_ismrmrd_kspace: usage:', 42));
end

function message = message_of(call)
  message = '';
  try
    call();
  catch err
    message = [err.identifier ' ' err.message];
  end
end
