function cases = test_recon_core()
%TEST_RECON_CORE  POCS and the one-pass method through homodyne_recon_mex, in either MEX layout.
  cases = {
    'pocs_beats_one_pass_on_a_phase_gradient', @pocs_beats_one_pass_on_a_phase_gradient
    'batch_equals_separate_calls', @batch_equals_separate_calls
    'fully_sampled_gives_inverse_dft_and_zeros_give_zeros', @fully_sampled_gives_inverse_dft_and_zeros_give_zeros
    'one_pass_is_the_module_chain', @one_pass_is_the_module_chain
    'refusals_name_the_option', @refusals_name_the_option
    'host_fftw_state_left_as_found', @host_fftw_state_left_as_found
  };
end

function k = centred_dft(x)
  k = fftshift(fftn(ifftshift(x)));
end

% A phase ramp of 3 cycles along y on top of the phantom's own phase (an echo
% 3 samples off the centre): POCS beats one-pass homodyne with the missing
% part at either end and with two partial axes; the input stays unchanged
% and the echo is found.
function pocs_beats_one_pass_on_a_phase_gradient(~)
  [image, ~] = homodyne_phantom([64 64 16]);
  y = reshape((0:63) / 64, 1, []);
  image = image .* exp(2i * pi * 3 * y);
  full = single(centred_dft(image));
  reference = abs(image);
  cuts = {{{':', 1:24, ':'}}, {{':', 41:64, ':'}}, {{':', 41:64, ':'}, {':', ':', 1:4}}};
  for c = 1:numel(cuts)
    k = full;
    for slab = cuts{c}
      k(slab{1}{:}) = 0;
    end
    original = k;
    [pocs, ~, ~, info] = homodyne_recon(k, 'Output', 'magnitude');
    one_pass = homodyne_recon(k, 'Method', 'homodyne');
    assert(isequal(k, original) && all(isfinite(pocs(:))));
    errors = [nrmse(pocs, reference), nrmse(abs(one_pass), reference)];
    assert(errors(1) < 0.7 * errors(2), 'cut %d: pocs %.4f, one pass %.4f', c, errors);
    assert(info.echo_offset(2) == 3 && info.iterations >= 1 && info.iterations <= 20, 'cut %d', c);
  end
end

% Volumes and coils of a stack, in one call and one call each: identical,
% whatever the number of threads.
function batch_equals_separate_calls(~)
  [~, k] = homodyne_phantom([32 24 6]);
  stack = single(cat(5, cat(4, k, 2i * k), cat(4, k .* exp(0.3i), conj(k(end:-1:1, end:-1:1, end:-1:1)))));
  stack(:, 1:8, :, :, :) = 0;
  for method = {'pocs', 'homodyne'}
    all_at_once = homodyne_recon(stack, 'Method', method{1}, 'Output', 'complex', 'Threads', 3);
    for v = 1:size(stack, 4) * size(stack, 5)
      one = homodyne_recon(stack(:, :, :, v), 'Method', method{1}, 'Output', 'complex', 'Threads', 1, ...
                           'Ranges', {[], [-4 11]});
      assert(isequal(all_at_once(:, :, :, v), one), '%s, volume %d', method{1}, v);
    end
  end
end

function fully_sampled_gives_inverse_dft_and_zeros_give_zeros(~)
  randn('seed', 5);
  for sizes = {[12 10 6], [9 7]}
    k = random_complex(sizes{1});
    expected = centred_idft(double(k));
    [img, phase] = homodyne_recon(k, 'Output', 'complex');
    assert(max(abs(img(:) - expected(:))) < 1e-5 * max(abs(expected(:))), 'size %s', mat2str(sizes{1}));
    strong = abs(expected) > 0.1 * max(abs(expected(:)));
    assert(max(abs(angle(exp(1i * (phase(strong) - angle(expected(strong))))))) < 1e-4);
  end
  for method = {'pocs', 'homodyne'}
    for output = {'real', 'magnitude', 'complex'}
      img = homodyne_recon_mex('reconstruct', zeros(8, 8, 'single'), 'Method', method{1}, 'Output', output{1}, ...
                               'Ranges', {[], [-2 3]});
      assert(isequal(size(img), [8 8]) && all(img(:) == 0), '%s %s', method{1}, output{1});
    end
  end
end

% One-pass homodyne is the module's chain, written out plainly: its "filter"
% weights and block (a reference of them), k = 0 weighted 1 where a range
% starts there (the module weights it 2: no ramp sample exists), the inverse
% DFTs and the low-resolution phase taken off, on both ends of an even and an
% odd axis, two axes, and ranges that start or end at k = 0.
function one_pass_is_the_module_chain(~)
  for n = [32 31]
    [~, full] = homodyne_phantom([n n 8]);
    m = round(3 / 8 * n);
    for cut = {{':', 1:m, ':'}, {':', n - m + 1:n, ':'}, {1:m, ':', 7:8}}
      k = full;
      k(cut{1}{:}) = 0;
      assert_module_chain(k);
    end
  end
  % Ranges from and to k = 0 on an axis of 10 (y = [0 4] and [-5 0]).
  [~, full] = homodyne_phantom([32 10]);
  for cut = {1:5, 7:10}
    k = full;
    k(:, cut{1}) = 0;
    assert_module_chain(k);
  end
end

% The chain runs on k-space mirrored so that each range's missing part lies
% at the negative end (the low-resolution phase is interpolated there). Where
% the low-resolution image nearly vanishes its phase is rounding, so those
% voxels are left out.
function assert_module_chain(k)
  [img, ~, ~, info] = homodyne_recon(k, 'Method', 'homodyne', 'NoiseAdaptive', false);
  ranges = info.ranges;
  mirrored = find(cellfun(@(r) r(1) + r(2) < 0, ranges));
  for axis = mirrored
    ranges{axis} = [-ranges{axis}(2), min(-ranges{axis}(1), ceil(size(k, axis) / 2) - 1)];
  end
  [block, weighted] = filter_reference(single(mirror_all(k, mirrored)), ranges);
  weighted_axes = find(cellfun(@(r) abs(r(1) + r(2)) > 1, ranges));
  for axis = weighted_axes(cellfun(@(r) r(1) == 0, ranges(weighted_axes)))
    centre = repmat({':'}, 1, 3);
    centre{axis} = floor(size(k, axis) / 2) + 1;
    weighted(centre{:}) = weighted(centre{:}) / 2 ^ (1 / numel(weighted_axes));
  end
  lowres = aligned_linear(centred_idft(double(block)), size(k));
  expected = mirror_all(real(centred_idft(double(weighted)) .* conj(lowres) ./ abs(lowres)), mirrored);
  phased = mirror_all(abs(lowres), mirrored) > 1e-3 * max(abs(lowres(:)));
  difference = max(abs(img(phased) - expected(phased)));
  assert(difference <= 2e-5 * max(abs(expected(:))), 'ranges %s: off by %g', mat2str(cell2mat(info.ranges)), difference);
end

% Linear interpolation along each axis onto SIZES samples, ends aligned.
function v = aligned_linear(v, sizes)
  for a = find(size(v) ~= sizes)
    [m, n] = deal(size(v, a), sizes(a));
    weights = ones(n, 1);
    if m > 1
      t = linspace(1, m, n)';
      f = min(floor(t), m - 1);
      weights = accumarray([(1:n)', f; (1:n)', f + 1], [1 - (t - f); t - f], [n m]);
    end
    order = [a, setdiff(1:numel(sizes), a)];
    x = permute(v, order);
    rest = size(x);
    v = ipermute(reshape(weights * reshape(x, m, []), [n, rest(2:end)]), order);
  end
end

function x = mirror_all(x, dims)
  for d = dims
    x = mirror_k(x, d);
  end
end

% The module's own conversion: arguments, classes, and the core's messages
% reaching the user in the wrapper's name (the option rules themselves are
% tested in the core).
function refusals_name_the_option(~)
  k = complex(ones(16, 12, 'single'), 1);
  call = @(varargin) homodyne_recon_mex('reconstruct', k, varargin{:});
  table = {
    'homodyne:usage', 'the commands are ''reconstruct'', ''filter'', ''phase'' and ''phantom''', @() homodyne_recon_mex('weigh', k)
    'homodyne:usage', 'usage:', @() homodyne_recon_mex('reconstruct')
    'homodyne:usage', 'name/value pairs', @() call('Iterations')
    'homodyne:usage', 'option names must be text', @() call(3, 4)
    'homodyne:badInput', 'KSPACE must be a single or double array, not int16', @() homodyne_recon_mex('reconstruct', int16(real(k)))
    'homodyne:badInput', 'NaN or Inf', @() homodyne_recon_mex('reconstruct', single([1 NaN; 1 1]))
    'homodyne:badOption', 'did you mean ''Iterations''', @() call('Iteration', 3)
    'homodyne:badOption', '''Threads''', @() call('Threads', 'all')
    'homodyne:badRange', '''Ranges'' x range must be [] or numbers, not a char', @() call('Ranges', {'ab'})
    'homodyne:badRange', '''Ranges'' y range [-9 3] lies outside the axis of 12 samples', @() call('Ranges', {[], [-9 3]})
    'homodyne:badOption', 'homodyne_recon: ''Output'' must be ''real'', ''magnitude'' or ''complex''', @() homodyne_recon(k, 'Output', 'phase')
    'homodyne:badOption', 'homodyne_recon: ''TransitionBand'' must be a whole number', @() homodyne_recon(k, 'TransitionBand', -1)
  };
  for t = 1:size(table, 1)
    try
      table{t, 3}();
      error('no error for "%s"', table{t, 2});
    catch err
      assert(strcmp(err.identifier, table{t, 1}) && ~isempty(strfind(err.message, table{t, 2})), ...
             'expected %s "%s", got %s "%s"', table{t, 1}, table{t, 2}, err.identifier, err.message);
    end
  end
end

% The core measures its FFT plans with its own wisdom; Octave's single-
% precision wisdom (the same entries; FFTW lists them in hash order) and
% FFTW thread setting are the same after a call.
function host_fftw_state_left_as_found(~)
  [~, k] = homodyne_phantom([24 20 6]);
  k(:, 1:6, :) = 0;
  entries = @(wisdom) sort(strsplit(wisdom, "\n"));
  wisdom = entries(fftw('swisdom'));
  threads = fftw('threads');
  homodyne_recon(k, 'Iterations', 2);
  assert(isequal(entries(fftw('swisdom')), wisdom) && fftw('threads') == threads);
end
