function cases = test_recon()
%TEST_RECON  homodyne_recon against independent expectations, in either MEX layout.
  cases = {
    'phantom_kspace_is_its_centred_dft', @phantom_kspace_is_its_centred_dft
    'fully_sampled_gives_magnitude_of_inverse_dft', @fully_sampled_gives_magnitude_of_inverse_dft
    'three_d_phantom_classes_and_zero_filling', @three_d_phantom_classes_and_zero_filling
    'missing_part_at_either_end_even_and_odd', @missing_part_at_either_end_even_and_odd
    'detected_and_known_ranges_agree', @detected_and_known_ranges_agree
    'volumes_reconstructed_independently', @volumes_reconstructed_independently
    'refusals', @refusals
  };
end

function e = nrmse(estimate, reference)
  e = norm(double(estimate(:)) - double(reference(:))) / norm(double(reference(:)));
end

function x = centred_idft(k)
  x = fftshift(ifftn(ifftshift(k)));
end

% k = 0 at index floor(n/2)+1 holds the sum of the object.
function phantom_kspace_is_its_centred_dft(~)
  for sizes = {[16 12 8], [15 11 7], [20 9]}
    [image, kspace] = homodyne_phantom(sizes{1});
    centre = num2cell(floor(size(kspace) / 2) + 1);
    difference = abs(centred_idft(kspace)) - abs(image);
    assert(abs(kspace(centre{:}) - sum(image(:))) < 1e-4 * sum(abs(image(:))) && max(abs(difference(:))) < 1e-5);
  end
end

function fully_sampled_gives_magnitude_of_inverse_dft(~)
  randn('seed', 3);
  for sizes = {[12 10 6], [9 8], [7 11 5]}
    k = complex(randn(sizes{1}), randn(sizes{1}));
    expected = abs(centred_idft(k));
    img = homodyne_recon(single(k));
    img_double = homodyne_recon(k, 'Ranges', {[], [], []});
    assert(isreal(img) && isa(img, 'single') && isa(img_double, 'double'));
    for out = {img, img_double}
      assert(max(abs(out{1}(:) - expected(:))) < 1e-5 * max(expected(:)), 'size %s', mat2str(sizes{1}));
    end
  end
end

% 5/8 of the ky lines of a 3-D phantom: homodyne beats zero filling, the
% zero-filled output is abs of the inverse DFT, the input is left unchanged
% and every output is real and keeps the input's class and size.
function three_d_phantom_classes_and_zero_filling(~)
  [image, kspace] = homodyne_phantom([64 64 16]);
  kspace(:, 1:24, :) = 0;
  for k = {kspace, double(kspace), real(kspace)}
    original = unshare(k{1});
    [img, phase, zero_filled] = homodyne_recon(k{1});
    assert(isequal(k{1}, original), 'input of class %s changed', class(k{1}));
    kept = @(x) strcmp(class(x), class(k{1})) && isreal(x) && isequal(size(x), size(k{1}));
    assert(kept(img) && kept(phase) && kept(zero_filled), 'outputs for class %s', class(k{1}));
    expected = abs(centred_idft(k{1}));
    assert(max(abs(zero_filled(:) - expected(:))) < 1e-6 * max(expected(:)));
    assert(isreal(k{1}) || nrmse(img, abs(image)) < 0.4 * nrmse(zero_filled, abs(image)));
  end
end

% The phantom is nearly symmetric along x but not y, and its phase is linear
% in x: an image or phase not mirrored back would be far off on one axis.
function missing_part_at_either_end_even_and_odd(~)
  for n = [64 63]
    [image, full] = homodyne_phantom([n n]);
    missing = round(3 / 8 * n);
    inside = abs(image) > 0.2;
    for dim = 1:2
      for at_positive_end = [false true]
        cut = {':', ':'};
        cut{dim} = (1:missing) + at_positive_end * (n - missing);
        kspace = full;
        kspace(cut{:}) = 0;
        [img, phase, zero_filled, info] = homodyne_recon(kspace, 'Method', 'homodyne');
        where = sprintf('n = %d, axis %d, missing at the positive end %d', n, dim, at_positive_end);
        phase_error = median(abs(angle(exp(1i * (phase(inside) - angle(image(inside)))))));
        assert(isequal(info.mirrored, at_positive_end & (1:3) == dim) && phase_error < 0.1 && ...
               nrmse(img, abs(image)) < 0.4 * nrmse(zero_filled, abs(image)), '%s: phase error %.3f', where, phase_error);
      end
    end
  end
end

function detected_and_known_ranges_agree(~)
  [~, kspace] = homodyne_phantom([40 36 10]);
  kspace(1:12, :, :) = 0;                    % x: k = -20 .. -9 missing
  kspace(:, end - 9:end, :) = 0;             % y: k = 8 .. 17 missing
  known = {[-8 19], [-18 7], [-5 4]};
  [detected_img, ~, ~, info] = homodyne_recon(kspace, 'Method', 'homodyne');
  assert(isequal(info.ranges, known), 'detected %s', mat2str(cell2mat(info.ranges)));
  assert(isequal(info.mirrored, [false true false]) && isequal(info.weighted, [true true false]));
  assert(isequal(detected_img, homodyne_recon(kspace, 'Ranges', known, 'Method', 'homodyne')));
  % A fully sampled axis may be given as [] and missing trailing entries count as [].
  assert(isequal(detected_img, homodyne_recon(kspace, 'ranges', {[-8 19], [-18 7]}, 'method', 'homodyne')));
  assert(isequal(homodyne_recon(kspace), homodyne_recon(kspace, 'Ranges', {[-8 19], [-18 7]})));
end

% Coils of a volume and of a slice: one call on the stack gives what a call
% per coil gives, with ranges detected across all coils.
function volumes_reconstructed_independently(~)
  for sizes = {[32 32 8], [32 28]}
    [image, kspace] = homodyne_phantom(sizes{1});
    [x, y] = ndgrid(linspace(-1, 1, size(image, 1)), linspace(-1, 1, size(image, 2)));
    coil = @(c) fftshift(fftn(ifftshift(image .* exp(-(x - 0.5 * cos(2 * pi * c / 3)).^2 - (y - 0.5 * sin(2 * pi * c / 3)).^2 + 1i * c * x))));
    stack = single(cat(4, coil(1), coil(2), coil(3)));
    stack(:, 1:12, :, :) = 0;
    [img, ~, ~, info] = homodyne_recon(stack);
    assert(isequal(size(img), size(stack)) && isequal(info.ranges{2}, [12 - sizes{1}(2) / 2, sizes{1}(2) / 2 - 1]));
    for c = 1:3
      one = homodyne_recon(stack(:, :, :, c));
      difference = img(:, :, :, c) - one;
      assert(max(abs(difference(:))) < 1e-5 * max(abs(one(:))), 'coil %d of %s', c, mat2str(sizes{1}));
    end
  end
end

% Non-contiguous or empty sampling, bad input or options, and too little of
% the symmetric extent or k = 0 not acquired, at either end.
function refusals(~)
  k = complex(ones(16, 12, 'single'), 1);
  gap = k;
  gap(:, 3:4) = 0;
  volumes = ones(16, 12, 4, 2, 'single');
  volumes(5, :, :, :) = 0;
  bad = k;
  bad(3) = NaN;
  one_pass = @(varargin) homodyne_recon(k, 'Method', 'homodyne', varargin{:});
  table = {
    'not contiguous (k = -6 .. 5, but nothing from -4 to -3)', @() homodyne_recon(gap)
    'along x are not contiguous', @() homodyne_recon(volumes)
    'holds no non-zero sample', @() homodyne_recon(zeros(8, 8, 'single'))
    'KSPACE must be a non-empty single or double array', @() homodyne_recon(int16(real(k)))
    'KSPACE must be a non-empty single or double array', @() homodyne_recon(zeros(0, 4, 'single'))
    'KSPACE holds NaN or Inf values', @() homodyne_recon(bad)
    'unknown option', @() homodyne_recon(k, 'Range', {})
    'name/value pairs', @() homodyne_recon(k, 'Ranges')
    '''Ranges'' must be a cell', @() homodyne_recon(k, 'Ranges', [1 2])
    'the x range must be [] or [first last] in whole k coordinates', @() one_pass('Ranges', {[-2.5 7]})
    'the y range [-3 6] must be ordered and lie within the axis, k = -6 .. 5', @() one_pass('Ranges', {[], [-3 6]})
    'the x range [5 -2] must be ordered', @() one_pass('Ranges', {[5 -2]})
    'the x range [0 7] covers 53 % of its symmetric extent', @() one_pass('Ranges', {[0 7]})
    'the x range [-8 0] covers 53 %', @() one_pass('Ranges', {[-8 0]})
    'the y range [1 5] covers 45 %', @() one_pass('Ranges', {[], [1 5]})
  };
  for t = 1:size(table, 1)
    message = error_message_of(table{t, 2});
    assert(~isempty(strfind(message, table{t, 1})), 'expected "%s" in "%s"', table{t, 1}, message);
  end
end
