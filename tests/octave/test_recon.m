function cases = test_recon()
%TEST_RECON  homodyne_recon against independent expectations, in either MEX layout.
  cases = {
    'phantom_kspace_is_its_centred_dft', @phantom_kspace_is_its_centred_dft
    'fully_sampled_gives_magnitude_of_inverse_dft', @fully_sampled_gives_magnitude_of_inverse_dft
    'homodyne_beats_zero_filling_on_3d_phantom', @homodyne_beats_zero_filling_on_3d_phantom
    'missing_part_at_either_end_even_and_odd', @missing_part_at_either_end_even_and_odd
    'detected_and_known_ranges_agree', @detected_and_known_ranges_agree
    'volumes_reconstructed_independently', @volumes_reconstructed_independently
    'input_unchanged_and_class_kept', @input_unchanged_and_class_kept
    'zero_filled_output', @zero_filled_output
    'refuses_non_contiguous_sampling', @refuses_non_contiguous_sampling
    'refuses_bad_input', @refuses_bad_input
  };
end

function e = nrmse(estimate, reference)
  e = norm(double(estimate(:)) - double(reference(:))) / norm(double(reference(:)));
end

% Centred inverse DFT of a 2-D or 3-D array, written out independently.
function x = centred_idft(k)
  x = fftshift(ifftn(ifftshift(k)));
end

function phantom_kspace_is_its_centred_dft(~)
  % k = 0 at index floor(n/2)+1 holds the sum of the object; the magnitude
  % comes back through the centred inverse DFT.
  for sizes = {[16 12 8], [15 11 7], [20 9]}
    [image, kspace] = homodyne_phantom(sizes{1});
    centre = num2cell(floor(size(kspace) / 2) + 1);
    assert(abs(kspace(centre{:}) - sum(image(:))) < 1e-4 * sum(abs(image(:))));
    difference = abs(centred_idft(kspace)) - abs(image);
    assert(max(abs(difference(:))) < 1e-5);
  end
end

function fully_sampled_gives_magnitude_of_inverse_dft(~)
  randn('seed', 3);
  for sizes = {[12 10 6], [9 8], [7 11 5]}
    k = complex(randn(sizes{1}), randn(sizes{1}));
    expected = abs(centred_idft(k));
    img = homodyne_recon(single(k));
    assert(isreal(img) && isa(img, 'single'));
    assert(max(abs(img(:) - expected(:))) < 1e-5 * max(expected(:)), 'size %s', mat2str(sizes{1}));
    img = homodyne_recon(k, 'Ranges', {[], [], []});
    assert(isa(img, 'double'));
    assert(max(abs(img(:) - expected(:))) < 1e-5 * max(expected(:)));
  end
end

function homodyne_beats_zero_filling_on_3d_phantom(~)
  [image, kspace] = homodyne_phantom([64 64 16]);
  kspace(:, 1:24, :) = 0;                    % 5/8 of the ky lines acquired
  [img, ~, zero_filled] = homodyne_recon(kspace);
  homodyne_error = nrmse(img, abs(image));
  zero_filled_error = nrmse(zero_filled, abs(image));
  assert(homodyne_error < 0.4 * zero_filled_error, 'homodyne %.3f, zero filled %.3f', homodyne_error, zero_filled_error);
end

% The phantom is nearly symmetric along x but not along y, and its phase has
% a linear term along x: an image or a phase that was not mirrored back
% after a cut at the positive end would be far off on one of the two axes.
function missing_part_at_either_end_even_and_odd(~)
  for n = [64 63]
    [image, full] = homodyne_phantom([n n]);
    missing = round(3 / 8 * n);
    inside = abs(image) > 0.2;
    for dim = 1:2
      for missing_end = {'negative', 'positive'}
        cut = {':', ':'};
        at_positive_end = strcmp(missing_end{1}, 'positive');
        if at_positive_end
          cut{dim} = n - missing + 1:n;
        else
          cut{dim} = 1:missing;
        end
        kspace = full;
        kspace(cut{:}) = 0;
        [img, phase, zero_filled, info] = homodyne_recon(kspace);
        where = sprintf('n = %d, axis %d missing at the %s end', n, dim, missing_end{1});
        assert(isequal(info.mirrored, [false false false] | (at_positive_end & (1:3) == dim)), where);
        homodyne_error = nrmse(img, abs(image));
        zero_filled_error = nrmse(zero_filled, abs(image));
        assert(homodyne_error < 0.4 * zero_filled_error, '%s: homodyne %.3f, zero filled %.3f', where, homodyne_error, zero_filled_error);
        phase_error = abs(angle(exp(1i * (phase(inside) - angle(image(inside))))));
        assert(median(phase_error) < 0.1, '%s: median phase error %.3f rad', where, median(phase_error));
      end
    end
  end
end

function detected_and_known_ranges_agree(~)
  [~, kspace] = homodyne_phantom([40 36 10]);
  kspace(1:12, :, :) = 0;                    % x: k = -20 .. -9 missing
  kspace(:, end - 9:end, :) = 0;             % y: k = 8 .. 17 missing
  known = {[-8 19], [-18 7], [-5 4]};
  [detected_img, ~, ~, info] = homodyne_recon(kspace);
  assert(isequal(info.ranges, known), 'detected %s', mat2str(cell2mat(info.ranges)));
  assert(isequal(info.mirrored, [false true false]) && isequal(info.weighted, [true true false]));
  assert(isequal(detected_img, homodyne_recon(kspace, 'Ranges', known)));
  % A fully sampled axis may be given as [] and missing trailing entries count as [].
  assert(isequal(detected_img, homodyne_recon(kspace, 'ranges', {[-8 19], [-18 7]})));
end

% Coils of a 3-D volume and of a single slice: one call on the stack gives
% what a call per coil gives, with ranges detected across all coils.
function volumes_reconstructed_independently(~)
  for sizes = {[32 32 8], [32 28]}
    [image, kspace] = homodyne_phantom(sizes{1});
    coils = 3;
    [x, y] = ndgrid(linspace(-1, 1, size(image, 1)), linspace(-1, 1, size(image, 2)));
    stack = zeros([size(kspace, 1), size(kspace, 2), size(kspace, 3), coils], 'single');
    for c = 1:coils
      sensitivity = single(exp(-((x - 0.5 * cos(2 * pi * c / coils)).^2 + (y - 0.5 * sin(2 * pi * c / coils)).^2)) .* exp(1i * c * x));
      coil_kspace = fftshift(fftn(ifftshift(image .* sensitivity)));
      coil_kspace(:, 1:12, :) = 0;
      stack(:, :, :, c) = coil_kspace;
    end
    [img, ~, ~, info] = homodyne_recon(stack);
    assert(isequal(size(img), size(stack)));
    n = size(stack, 2);
    assert(isequal(info.ranges{2}, [12 - n / 2, n / 2 - 1]));
    for c = 1:coils
      one = homodyne_recon(stack(:, :, :, c));
      difference = img(:, :, :, c) - one;
      assert(max(abs(difference(:))) < 1e-5 * max(abs(one(:))), 'coil %d of %s', c, mat2str(sizes{1}));
    end
  end
end

function input_unchanged_and_class_kept(~)
  [~, kspace] = homodyne_phantom([24 20 6]);
  kspace(:, 1:7, :) = 0;
  for k = {kspace, double(kspace), real(kspace)}
    original = unshare(k{1});
    [img, phase, zero_filled] = homodyne_recon(k{1});
    assert(isequal(k{1}, original), 'input of class %s changed', class(k{1}));
    assert(strcmp(class(img), class(k{1})) && strcmp(class(phase), class(k{1})) && strcmp(class(zero_filled), class(k{1})));
    assert(isreal(img) && isreal(phase) && isequal(size(img), size(k{1})) && isequal(size(phase), size(k{1})));
  end
end

function zero_filled_output(~)
  [~, kspace] = homodyne_phantom([30 26 6]);
  kspace(:, 1:9, :) = 0;
  [~, ~, zero_filled] = homodyne_recon(kspace);
  expected = abs(centred_idft(kspace));
  assert(max(abs(zero_filled(:) - expected(:))) < 1e-6 * max(expected(:)));
end

function refuses_non_contiguous_sampling(~)
  kspace = complex(ones(16, 12, 'single'), 1);
  kspace(:, 3:4) = 0;                        % a gap inside the acquired lines
  expect_message('not contiguous (k = -6 .. 5, but nothing from -4 to -3)', @() homodyne_recon(kspace));
  kspace = ones(16, 12, 4, 2, 'single');
  kspace(5, :, :, :) = 0;
  expect_message('along x are not contiguous', @() homodyne_recon(kspace));
  expect_message('holds no non-zero sample', @() homodyne_recon(zeros(8, 8, 'single')));
end

function refuses_bad_input(~)
  k = complex(ones(16, 12, 'single'), 1);
  expect_message('KSPACE must be a non-empty single or double array', @() homodyne_recon(int16(real(k))));
  expect_message('KSPACE must be a non-empty single or double array', @() homodyne_recon(zeros(0, 4, 'single')));
  bad = k;
  bad(3) = NaN;
  expect_message('KSPACE holds NaN or Inf values', @() homodyne_recon(bad));
  expect_message('unknown option', @() homodyne_recon(k, 'Range', {}));
  expect_message('name/value pairs', @() homodyne_recon(k, 'Ranges'));
  expect_message('''Ranges'' must be a cell', @() homodyne_recon(k, 'Ranges', [1 2]));
  expect_message('the x range must be [] or [first last] in whole k coordinates', @() homodyne_recon(k, 'Ranges', {[-2.5 7]}));
  expect_message('the y range [-3 6] must be ordered and lie within the axis, k = -6 .. 5', @() homodyne_recon(k, 'Ranges', {[], [-3 6]}));
  expect_message('the x range [5 -2] must be ordered', @() homodyne_recon(k, 'Ranges', {[5 -2]}));
  % Too little of the symmetric extent, or k = 0 not acquired, at either end.
  expect_message('the x range [0 7] covers 53 % of its symmetric extent', @() homodyne_recon(k, 'Ranges', {[0 7]}));
  expect_message('the x range [-8 0] covers 53 %', @() homodyne_recon(k, 'Ranges', {[-8 0]}));
  expect_message('the y range [1 5] covers 45 %', @() homodyne_recon(k, 'Ranges', {[], [1 5]}));
end

function expect_message(fragment, fn)
  try
    fn();
  catch err
    assert(~isempty(strfind(err.message, fragment)), 'expected "%s" in "%s"', fragment, err.message);
    return;
  end
  error('expected an error containing "%s", but the call succeeded', fragment);
end
