function [calls, outcome_of] = toolbox_batch()
%TOOLBOX_BATCH  Hostile and unusual calls of homodyne_recon, homodyne_filter,
%   homodyne_phase and homodyne_phantom for SWEEP_IN_CHILDREN. OUTCOME_OF logs 'S' for
%   a success with finite outputs of the input's class and, where a row knows it, the
%   right result; 'E' for an error with a homodyne:* identifier (the row's, if it names
%   one) whose message starts with the wrapper's name and names an argument; 'F reason'
%   otherwise, or when an input changed.
  rng(1, 'twister');
  outcome_of = @outcome_of;
  calls = cell(0, 5);
  % An object of magnitude m and phase 0.9 on 8 samples: acquired from k = 0
  % up, down to k = 0, and without only the top plane of the even axis (at
  % most one unpaired plane: left whole, not weighted, the plain inverse DFT).
  x = ((0:7)' - 4);
  m = 2 + 0.6 * cos(2 * pi * x / 8);
  K = fftshift(fft(ifftshift(m * exp(0.9i))));
  [up, down, top] = deal(K, K, K);
  up(1:4) = 0;
  down(6:8) = 0;
  top(8) = 0;
  near_m = @(img) max(abs(img(:) - m)) < 1e-5;
  calls = add(calls, 'homodyne_recon', {up}, 1, @(o) max(abs(o{1} - m)) < 1e-3);   % POCS
  calls = add(calls, 'homodyne_recon', {up, 'Method', 'homodyne'}, 4, @(o) near_m(o{1}) && isequal(o{4}.ranges{1}, [0 3]));
  calls = add(calls, 'homodyne_recon', {down, 'Method', 'homodyne'}, 4, @(o) near_m(o{1}) && isequal(o{4}.ranges{1}, [-4 0]));
  calls = add(calls, 'homodyne_recon', {reshape(up, 1, 1, 8), 'Method', 'homodyne'}, 1, @(o) near_m(o{1}));
  calls = add(calls, 'homodyne_recon', {single(reshape(down, 1, 1, 8)), 'Method', 'homodyne'}, 1, @(o) near_m(o{1}));
  calls = add(calls, 'homodyne_recon', {top, 'Method', 'homodyne', 'NoiseAdaptive', false}, 4, @(o) isequal(o{4}.ranges{1}, [-4 2]) ...
              && max(abs(o{1} - abs(centred_idft(top)))) < 1e-6);
  calls = add(calls, 'homodyne_recon', {top.', 'Method', 'homodyne'}, 4, @(o) isequal(o{4}.ranges{2}, [-4 2]));

  % Partial-Fourier phantom, unit scale; the same data at any scale and in any
  % storage give the same image (to single rounding).
  [~, P] = homodyne_phantom([16 12 4]);
  P = P / max(abs(P(:)));
  P(:, 1:3, :) = 0;
  unit = homodyne_recon(P);
  for scale = {1e300, 1e-300, 1e-22, 1e37}
    data = double(P) * scale{1};
    if abs(log10(scale{1})) < 38
      data = P * scale{1};
    end
    calls = add(calls, 'homodyne_recon', {data}, 1, @(o) close_to(o{1} / scale{1}, unit, 1e-4));
  end
  calls = add(calls, 'homodyne_recon', {P * 2^-100}, 1, @(o) isequal(o{1}, homodyne_recon(P) * 2^-100));   % bit for bit
  for data = {P, double(P), real(P)}   % ZERO_FILLED is abs of the inverse DFT as it is
    calls = add(calls, 'homodyne_recon', data, 3, @(o) close_to(o{3}, abs(centred_idft(data{1})), 1e-6));
  end
  % Images below the normal range of their class would have lost their digits.
  calls = add(calls, 'homodyne_recon', {double(P) * 2^-1070}, 1, {'homodyne:scale', 'scale the data'});
  calls = add(calls, 'homodyne_recon', {P * 1e-40}, 1, {'homodyne:scale', 'pass the data as double'});
  calls = add(calls, 'homodyne_filter', {double(P) * 1e300, [], [-3 5]}, 2, @(o) close_to(o{2} / 1e300, weights_of(P, {[], [-3 5], []}), 1e-6));
  calls = add(calls, 'homodyne_phase', {double(P(:, :, 1)) * 1e-300, double(P(:, :, 1)) * 1e-300}, 1, ...
              @(o) close_to(o{1} * 1e300, abs(double(P(:, :, 1))), 1e-6));
  calls = add(calls, 'homodyne_phase', {P(:, :, 1), P(:, :, 1) * 1e-30}, 1, @(o) close_to(o{1}, abs(P(:, :, 1)), 1e-6));

  % Diagonal, sparse, range and zero-imaginary arrays are read as full arrays.
  D = eye(16) * (1 + 2i);
  full_D = complex(full(real(D)), full(imag(D)));
  calls = add(calls, 'homodyne_filter', {D, [-4 7]}, 2, @(o) isequal(o{2}, double(weights_of(full_D, {[-4 7], [], []}))));
  calls = add(calls, 'homodyne_filter', {eye(16), [-4 7]}, 2, @(o) isequal(o{2}, double(weights_of(full(eye(16)), {[-4 7], [], []}))));
  calls = add(calls, 'homodyne_filter', {complex(ones(16, 12), 0), [-4 7]}, 2, ...
              @(o) iscomplex(o{2}) && isequal(real(o{2}), double(weights_of(ones(16, 12), {[-4 7], [], []}))));
  calls = add(calls, 'homodyne_phase', {eye(8) * (1 + 2i), ones(4) * (1 + 2i)}, 1, ...
              @(o) close_to(o{1}, eye(8) * abs(1 + 2i), 1e-6) && iscomplex(o{1}));
  calls = add(calls, 'homodyne_recon', {D}, 1, @(o) close_to(o{1}, homodyne_recon(full_D), 0));
  S = real(double(P(:, :, 2)));
  calls = add(calls, 'homodyne_recon', {sparse(S)}, 1, @(o) close_to(o{1}, homodyne_recon(S), 0));
  calls = add(calls, 'homodyne_filter', {sparse(S), [], [-3 5]}, 2, @(o) close_to(o{2}, double(weights_of(S, {[], [-3 5], []})), 0));
  calls = add(calls, 'homodyne_phase', {(1:8)', single(-(1:4)')}, 1, @(o) isequal(o{1}, -(1:8)'));

  % Fully sampled data of any shape: the magnitude of the plain inverse DFT.
  for sizes = {[7 5 3], [8 6 4 2], [1 9], [5 1 4], [4 4 1 1 2], [3 3 3 2 2]}
    data = complex(randn(sizes{1}), randn(sizes{1}));
    calls = add(calls, 'homodyne_recon', {data}, 1, @(o) close_to(o{1}, abs(centred_idft(data)), 1e-5));
  end

  % One rule for the ranges of homodyne_filter and one-pass homodyne_recon.
  k16 = complex(randn(16, 12), 1);
  k16x = k16;
  k16x(1:4, :) = 0;   % acquired over x = [-4 7]
  ranges = {'homodyne:badRange', '[7 -4]', [7 -4]; 'homodyne:badRange', '[-4.5 7]', [-4.5 7]
            'homodyne:badRange', 'outside the axis', [-9 7]; 'homodyne:badRange', '[NaN 7]', [NaN 7]
            'homodyne:badRange', '[-Inf 7]', [-Inf 7]; 'homodyne:badRange', '[-4 Inf]', [-4 Inf]
            'homodyne:badRange', '[first last] in k coordinates, not', -4; 'homodyne:badRange', '[-1e+300 3]', [-1e300 3]
            'homodyne:badRange', 'not a complex double', [-4 7] + 1i; 'homodyne:badRange', 'not a char', 'ab'
            'homodyne:badRange', 'not a cell', {1}; 'homodyne:badRange', '[first last] in k coordinates, not', [-4 7 8]
            'homodyne:badRange', '[first last] in k coordinates, not', ones(2); 'homodyne:sampling', 'does not contain k = 0', [1 5]
            'homodyne:sampling', 'covers 53 %', [0 7]; '', '', int16([-4 7]); '', '', sparse([-4 7])};
  for r = 1:size(ranges, 1)
    expect = ranges(r, 1:2);
    if isempty(expect{1})
      expect = @(o) close_to(o{1}, homodyne_recon(k16x, 'Ranges', {[-4 7]}, 'Method', 'homodyne'), 0);
    end
    calls = add(calls, 'homodyne_recon', {k16x, 'Ranges', ranges(r, 3), 'Method', 'homodyne'}, 1, expect);
    if isempty(ranges{r, 1})
      expect = @(o) isequal(o{2}, weights_of(k16, {[-4 7], [], []}));
    end
    calls = add(calls, 'homodyne_filter', {k16, ranges{r, 3}}, 2, expect);
  end

  % The wrappers give the module's results: the weights of two and three axes
  % (geometric mean) and the central block; a range missing its positive end
  % is the mirrored axis weighted (k -> -k: a flip and a shift by one on an
  % even axis); the phase of an image of the data's own size, bit for bit.
  c3 = random_complex(16, 12, 10);
  [b3, w3] = filter_reference(c3, {[-4 7], [-3 5], []});
  calls = add(calls, 'homodyne_filter', {c3, [-4 7], [-3 5]}, 2, @(o) isequal(o{1}, b3) && isequal(o{2}, w3));
  c4 = complex(randn(12, 10, 8, 3), randn(12, 10, 8, 3));
  [b4, w4] = filter_reference(single(c4), {[-3 5], [], [-2 3]});
  calls = add(calls, 'homodyne_filter', {c4, [-3 5], [], [-2 3]}, 2, @(o) isequal(o{1}, double(b4)) && isequal(o{2}, double(w4)));
  [bm, wm] = filter_reference(mirror_k(single(k16), 1), {[-3 7], [], []});
  calls = add(calls, 'homodyne_filter', {k16, [-8 3]}, 2, @(o) isequal(o{1}, double(mirror_k(bm, 1))) && isequal(o{2}, double(mirror_k(wm, 1))));
  low = random_complex(10, 8, 6);
  for image = {c3(1:10, 1:8, 1:6), real(c3(1:10, 1:8, 1:6)), double(c3(1:10, 1:8, 1:6))}
    calls = add(calls, 'homodyne_phase', {image{1}, low}, 1, @(o) isequal(o{1}, phase_reference(single(image{1}), low)));
  end
  calls = add(calls, 'homodyne_recon', {single(k16)}, 1, @(o) close_to(o{1}, abs(centred_idft(k16)), 1e-5));

  % Sampled ranges against the data. A phantom acquired over ky = [-3 11]
  % (5/8 of 24), its unacquired lines holding zeros, filler or noise (SNR 20).
  [image, Q] = homodyne_phantom([32 24 8]);
  noise = mean(abs(image(:))) / 20 * sqrt(numel(Q)) * complex(randn(size(Q)), randn(size(Q))) / sqrt(2);
  [zeros_pf, filler, noisy, noisy_full] = deal(Q, Q, Q + noise, Q + noise);
  zeros_pf(:, 1:9, :) = 0;
  filler(:, 1:9, :) = 1e-6 * max(abs(Q(:)));
  noisy(:, 1:9, :) = noise(:, 1:9, :);
  % Expected images are computed in the process that makes the call: FFTW's
  % measured plans, and so the rounding, may differ between processes.
  reference = @() homodyne_recon(zeros_pf);
  detected = @(method, range) @(o) strcmp(o{4}.detection(2).method, method) && isequal(o{4}.ranges{2}, range);
  calls = add(calls, 'homodyne_recon', {filler}, 4, @(o) detected('energy', [-3 11])(o) && isequal(o{1}, reference()));
  calls = add(calls, 'homodyne_recon', {noisy}, 4, detected('energy', [-3 11]));
  calls = add(calls, 'homodyne_recon', {noisy_full}, 4, @(o) isequal({o{4}.detection.method}, {'full', 'full', 'full'}));
  calls = add(calls, 'homodyne_recon', {zeros_pf}, 4, @(o) detected('zeros', [-3 11])(o) && o{4}.detection(2).ratio == 0);
  % Unacquired lines at a quarter of the power of the mirror of the last one: not
  % clearly missing, but one-sided.
  strong = sum(sum(abs(Q(:, 17, :)).^2)) / numel(Q(:, 17, :));
  weak = Q;
  weak(:, 1:9, :) = sqrt(strong / 4) * exp(2i * pi * rand(32, 9, 8));
  calls(end + 1, :) = {'homodyne_recon', {weak}, 1, @(o) strcmp(o{1}, 'homodyne:oneSided'), @warning_of_recon};
  % The phantom's own z spectrum has a weak outermost plane (its phase makes
  % it): fully sampled, no warning.
  [~, P3] = homodyne_phantom([128 128 32]);
  P3(:, 1:48, :) = 0;
  calls(end + 1, :) = {'homodyne_recon', {P3, 'Method', 'homodyne'}, 1, @(o) isempty(o{1}), @warning_of_recon};
  calls = add(calls, 'homodyne_recon', {zeros_pf, 'PartialFourier', {[], 5/8}}, 1, @(o) isequal(o{1}, reference()));
  calls = add(calls, 'homodyne_recon', {noisy, struct('ranges', {{[], [-3 11]}})}, 1, ...
              @(o) isequal(o{1}, homodyne_recon(noisy, 'Ranges', {[], [-3 11], []})));
  calls = add(calls, 'homodyne_recon', {zeros_pf, 'PartialFourier', {[], -5/8}}, 1, {'homodyne:badRange', 'leaves out planes that hold data'});
  calls = add(calls, 'homodyne_recon', {zeros_pf, 'Ranges', {[]}, 'PartialFourier', {[]}}, 1, {'homodyne:badOption', 'give the sampled ranges once'});
  % 2-D coil images stacked along dimension 3 warn, unless named as coils; 3-D k-space does not.
  [x, y] = ndgrid(linspace(-1, 1, 32), linspace(-1, 1, 24));
  plane = double(image(:, :, 5));
  coils = zeros(32, 24, 8);
  for c = 1:8
    coils(:, :, c) = fftshift(fft2(ifftshift(plane .* exp(-(x - cos(c)).^2 - (y - sin(c)).^2 + 1i * c * x))));
  end
  calls(end + 1, :) = {'homodyne_recon', {coils}, 1, @(o) strcmp(o{1}, 'homodyne:zLooksLikeVolumes'), @warning_of_recon};
  calls(end + 1, :) = {'homodyne_recon', {Q}, 1, @(o) isempty(o{1}), @warning_of_recon};
  calls(end + 1, :) = {'homodyne_recon', {coils, 'Coils', 3}, 1, @(o) isempty(o{1}), @warning_of_recon};

  % Messages: usage, classes, values, options, sampling, a missing module.
  gap = k16;
  gap(9, :) = 0;
  rows = {
    'homodyne_recon', {}, 'homodyne:usage', 'usage: IMG = homodyne_recon(KSPACE)'
    'homodyne_filter', {k16}, 'homodyne:usage', 'usage'
    'homodyne_filter', {k16, [], [], [], []}, 'homodyne:usage', 'usage'
    'homodyne_phase', {k16}, 'homodyne:usage', 'usage'
    'homodyne_phantom', {}, 'homodyne:usage', 'usage'
    'homodyne_phantom', {[8 8], 1}, 'homodyne:usage', 'usage'
    'homodyne_recon', {gap}, 'homodyne:sampling', 'nothing at k = 0'
    'homodyne_recon', {sparse(8, 8)}, 'homodyne:sampling', 'KSPACE holds no non-zero sample'
    'homodyne_recon', {int16(real(k16))}, 'homodyne:badInput', 'KSPACE must be a single or double array, not int16'
    'homodyne_recon', {true(4)}, 'homodyne:badInput', 'not logical'
    'homodyne_filter', {{1}, []}, 'homodyne:badInput', 'KSPACE must be a single or double array, not cell'
    'homodyne_recon', {zeros(0, 4)}, 'homodyne:badInput', 'KSPACE must not be empty (its size is 0x4)'
    'homodyne_recon', {[1 NaN]}, 'homodyne:badInput', 'KSPACE holds NaN or Inf values'
    'homodyne_filter', {[1 Inf], []}, 'homodyne:badInput', 'KSPACE holds NaN or Inf values'
    'homodyne_phase', {k16, [1 NaN]}, 'homodyne:badInput', 'LOWRES holds NaN or Inf values'
    'homodyne_phase', {k16, zeros(2, 0)}, 'homodyne:badInput', 'LOWRES must not be empty'
    'homodyne_phase', {k16, ones(2, 2, 2, 3)}, 'homodyne:badInput', 'LOWRES (size 2x2x2x3) must have the sizes of IMAGE'
    'homodyne_recon', {k16, 'Ranges'}, 'homodyne:usage', 'name/value pairs'
    'homodyne_recon', {k16, 5, 1}, 'homodyne:usage', 'pair 1 starts with a double'
    'homodyne_recon', {k16, 'Bogus', 1}, 'homodyne:badOption', 'unknown option ''Bogus''; the options are Method, Output, Ranges'
    'homodyne_recon', {k16, 'Ranges', [1 2]}, 'homodyne:badOption', '''Ranges'' must be a list {KX, KY, KZ}'
    'homodyne_recon', {k16, 'Ranges', {[], [], [], []}}, 'homodyne:badOption', '''Ranges'' must be a list {KX, KY, KZ}'
    'homodyne_phantom', {[8 + 1i, 8 + 1i]}, 'homodyne:badInput', 'SIZES must be'
    'homodyne_phantom', {[8 NaN]}, 'homodyne:badInput', 'SIZES must be'
    'homodyne_phantom', {[0 8]}, 'homodyne:badInput', 'SIZES must be'
    'homodyne_phantom', {[8 8 8 8]}, 'homodyne:badInput', 'SIZES must be'
    'homodyne_phantom', {'ab'}, 'homodyne:badInput', 'SIZES must be'
    'homodyne_phantom', {[2^16 2^16]}, 'homodyne:badInput', 'give 2^31 or more samples'
  };
  for r = 1:size(rows, 1)
    calls = add(calls, rows{r, 1:2}, 1, rows(r, 3:4));
  end
  calls(end + 1, :) = {'homodyne_recon', {k16}, 1, {'homodyne:noModule', 'make mex'}, @without_module};
  calls = add(calls, 'homodyne_phase', {k16, double(k16(1:2:end, :))}, 1, @(o) isa(o{1}, 'double'));
  calls = add(calls, 'homodyne_phase', {randn(6, 5, 4), randn(3, 3)}, 1, []);
  calls = add(calls, 'homodyne_phase', {randn(6, 5), randn(3, 3, 2)}, 1, []);
  filler16 = k16;
  filler16(:, 1:3) = 1e-7;   % detection would call y partial; {} says every axis is whole
  calls = add(calls, 'homodyne_recon', {filler16, 'ranges', {}}, 1, @(o) close_to(o{1}, abs(centred_idft(filler16)), 1e-5));
end

% Rows: wrapper, arguments, outputs, expectation (a check of the outputs, {id,
% message part}, or [] for any clean outcome), and the function to call if not
% the wrapper itself.
function outcome = outcome_of(row)
  [name, args, nout, expect, fn] = row{:};
  if isempty(fn)
    fn = str2func(name);
  end
  reference = cellfun(@unshare, args, 'UniformOutput', false);
  out = cell(1, nout);
  try
    [out{:}] = fn(args{:});
    outcome = judge_success(name, args, out, expect);
  catch err
    outcome = judge_error(name, err, expect);
  end
  changed = find(~cellfun(@same_value, args, reference), 1);
  if ~isempty(changed)
    outcome = sprintf('F input %d changed (%s)', changed, outcome);
  end
end

function outcome = judge_error(name, err, expect)
  outcome = 'E';
  names = 'KSPACE|KX|KY|KZ|IMAGE|LOWRES|SIZES|''Ranges''|''PartialFourier''|detected|usage|option|IMG|BLOCK|WEIGHTED|CORRECTED|ZERO_FILLED|module';
  if ~strncmp(err.identifier, 'homodyne:', 9) || ~strncmp(err.message, [name ': '], numel(name) + 2)
    outcome = sprintf('F unclear error %s: %s', err.identifier, err.message);
  elseif isempty(regexp(err.message, names, 'once'))
    outcome = ['F names no argument: ' err.message];
  elseif isa(expect, 'function_handle')
    outcome = ['F refused a valid call: ' err.message];
  elseif iscell(expect) && (~strcmp(err.identifier, expect{1}) || (~isempty(expect{2}) && isempty(strfind(err.message, expect{2}))))
    outcome = sprintf('F expected %s "%s", got %s: %s', expect{:}, err.identifier, err.message);
  end
end

% Inf never, NaN only where documented: in homodyne_phase's result and in the
% phase of homodyne_recon, where its image is 0.
function outcome = judge_success(name, args, out, expect)
  outcome = 'S';
  if iscell(expect)
    outcome = sprintf('F succeeded, expected %s', expect{1});
    return;
  end
  for o = 1:numel(out)
    x = out{o};
    if isnumeric(x) && any(isinf(x(:)))
      outcome = sprintf('F output %d holds Inf', o);
    elseif isnumeric(x) && any(isnan(x(:))) && ~strcmp(name, 'homodyne_phase') ...
           && ~(strcmp(name, 'homodyne_recon') && o == 2 && all(out{1}(isnan(x)) == 0))
      outcome = sprintf('F output %d holds NaN', o);
    elseif isnumeric(x) && ~strcmp(name, 'homodyne_phantom') && o < 4 && ~strcmp(class(x), class(args{1}))
      outcome = sprintf('F output %d is %s for %s input', o, class(x), class(args{1}));
    end
  end
  if strcmp(outcome, 'S') && isa(expect, 'function_handle') && ~expect(out)
    outcome = 'F wrong result';
  end
end

function calls = add(calls, name, args, nout, expect)
  calls(end + 1, :) = {name, args, nout, expect, []};
end

% The identifier of the last warning that homodyne_recon gave ('' for none).
function id = warning_of_recon(varargin)
  lastwarn('', '');
  homodyne_recon(varargin{:});
  [~, id] = lastwarn();
end

% The call as a fresh clone without the built module would make it.
function img = without_module(varargin)
  % The toolbox's M-files alone, copied to a fresh folder, with every built
  % module (the build dir's, or one that `make mex` left in matlab/) off the path.
  toolbox = fileparts(which('homodyne_recon'));
  copy = tempname();
  mkdir(copy);
  copyfile(fullfile(toolbox, '*.m'), copy);
  copyfile(fullfile(toolbox, 'private'), fullfile(copy, 'private'));
  hidden = {toolbox};
  rmpath(toolbox);
  while exist('homodyne_mex') == 3
    hidden{end + 1} = fileparts(which('homodyne_mex'));
    rmpath(hidden{end});
  end
  addpath(copy);
  restore = onCleanup(@() restore_path(hidden, copy));
  img = homodyne_recon(varargin{:});
end

function restore_path(hidden, copy)
  rmpath(copy);
  confirm_recursive_rmdir(false, 'local');
  rmdir(copy, 's');
  addpath(hidden{end:-1:1});
end

function ok = close_to(a, b, tolerance)
  ok = isequal(size(a), size(b)) && max(abs(double(a(:)) - double(b(:)))) <= tolerance * max(abs(double(b(:))));
end

% The homodyne weighting of the data, computed independently in single.
function weighted = weights_of(data, ranges)
  [~, weighted] = filter_reference(single(data), ranges);
end
