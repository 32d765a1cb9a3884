function cases = test_recon_core()
%TEST_RECON_CORE  POCS and the one-pass method through homodyne_recon_mex, in either MEX layout.
  cases = {
    'pocs_beats_one_pass_on_a_phase_gradient', @pocs_beats_one_pass_on_a_phase_gradient
    'batch_equals_separate_calls', @batch_equals_separate_calls
    'fully_sampled_gives_inverse_dft_and_zeros_give_zeros', @fully_sampled_gives_inverse_dft_and_zeros_give_zeros
    'one_pass_core_equals_m_code_chain', @one_pass_core_equals_m_code_chain
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
      img = homodyne_recon_mex('reconstruct', zeros(8, 8, 'single'), ...
                               struct('Method', method{1}, 'Output', output{1}, 'Ranges', {{[], [-2 3]}}));
      assert(isequal(size(img), [8 8]) && all(img(:) == 0), '%s %s', method{1}, output{1});
    end
  end
end

% The C++ one-pass chain against the M-code chain over the module: equal to
% single-precision rounding, either end, even and odd axes, two axes; its
% complex output is the real image times the low-resolution phase.
function one_pass_core_equals_m_code_chain(~)
  for n = [32 31]
    [~, full] = homodyne_phantom([n n 8]);
    m = round(3 / 8 * n);
    for cut = {{':', 1:m, ':'}, {':', n - m + 1:n, ':'}, {1:m, ':', 7:8}}
      k = full;
      k(cut{1}{:}) = 0;
      [expected, phase, ~, info] = homodyne_recon(k, 'Method', 'homodyne');
      options = struct('Method', 'homodyne', 'Ranges', {info.ranges});
      img = homodyne_recon_mex('reconstruct', k, options);
      assert(max(abs(img(:) - expected(:))) <= 1e-5 * max(abs(expected(:))), 'n = %d', n);
      options.Output = 'complex';
      c = homodyne_recon_mex('reconstruct', k, options);
      inside = abs(expected) > 0.1;
      assert(max(abs(c(inside) - expected(inside) .* exp(1i * phase(inside)))) < 1e-5, 'complex, n = %d', n);
    end
  end
end

function refusals_name_the_option(~)
  k = complex(ones(16, 12, 'single'), 1);
  call = @(varargin) homodyne_recon_mex('reconstruct', k, struct(varargin{:}));
  table = {
    'homodyne:usage', 'the only command is ''reconstruct''', @() homodyne_recon_mex('filter', k)
    'homodyne:usage', 'Usage:', @() homodyne_recon_mex('reconstruct')
    'homodyne:badInput', 'KSPACE must be a non-empty single array', @() homodyne_recon_mex('reconstruct', double(k))
    'homodyne:badInput', 'NaN or Inf', @() homodyne_recon_mex('reconstruct', single([1 NaN; 1 1]))
    'homodyne:badOption', 'unknown option ''Iteration''', @() call('Iteration', 3)
    'homodyne:badOption', '''Iterations'' must be a whole number from 1', @() call('Iterations', 2.5)
    'homodyne:badOption', '''Tolerance'' must be at least 0', @() call('Tolerance', -1)
    'homodyne:badOption', '''Threads''', @() call('Threads', 'all')
    'homodyne:badOption', '''Constraint'' must be ''auto'', ''real'' or ''magnitude''', @() call('Constraint', 'phase')
    'homodyne:badOption', '''Window'' must be', @() call('Window', 7)
    'homodyne:badOption', '''Ranges'' must be a cell', @() call('Ranges', {[1 2 3]})
    'homodyne:badRange', 'the y range [-9 3] must be ordered and lie within the axis', @() call('Ranges', {{[], [-9 3]}})
    'homodyne:sampling', 'does not hold k = 0', @() call('Ranges', {{[2 7]}})
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
