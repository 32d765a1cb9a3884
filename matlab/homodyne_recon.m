function [img, phase, zero_filled, info] = homodyne_recon(kspace, varargin)
%HOMODYNE_RECON  Homodyne reconstruction of partial-Fourier k-space.
%
%   IMG = HOMODYNE_RECON(KSPACE)
%   IMG = HOMODYNE_RECON(KSPACE, 'Ranges', {KX, KY, KZ})
%   [IMG, PHASE, ZERO_FILLED, INFO] = HOMODYNE_RECON(...)
%
%   KSPACE is single or double, real or complex, 2-D or 3-D k-space, centred:
%   k = 0 sits at index floor(n/2)+1 of each of the first three dimensions
%   (x, y, z), so that an axis of n samples covers k = -floor(n/2) ..
%   ceil(n/2)-1. Dimensions 4 and up index independent volumes (coils,
%   echoes, time), each reconstructed on its own; all share the ranges.
%
%   Sampled ranges. Each of the first three axes is either fully sampled or
%   acquired over one contiguous block [first last] of k coordinates that
%   contains k = 0 and at least 55 % of the symmetric extent around it. The
%   missing part may lie at either end. By default the ranges are detected:
%   per axis, the planes holding any non-zero sample in any volume; non-zero
%   planes with gaps between them are refused. 'Ranges', {KX, KY, KZ} gives
%   them instead, each [] (fully sampled) or [first last] in whole k
%   coordinates; missing trailing entries count as []. An axis with
%   |first + last| <= 1 counts as fully sampled and is left whole.
%
%   Method. The k-space is copied (the caller's array is never changed) and
%   converted to single. An axis whose missing part lies at the positive end
%   is mirrored (k -> -k: a flip plus a shift by one on an even axis) so that
%   HOMODYNE_MEX sees it missing at the negative end. 'filter' weights the
%   data with the homodyne ramps and returns the symmetric central block;
%   both are inverse transformed (centred DFT over the first three axes);
%   'multiply' takes the phase of the low-resolution block image off the
%   weighted image; the real part is the result, and mirrored axes are
%   mirrored back. On a fully sampled k-space nothing is weighted and IMG is
%   the magnitude of the plain inverse DFT.
%
%   Outputs, all of KSPACE's class and of its size:
%     IMG          the real homodyne image. It may dip below 0 where the
%                  phase estimate is off, and it is 0 where the
%                  low-resolution image is exactly 0 (no phase exists there).
%     PHASE        the low-resolution phase that was taken off, in radians,
%                  on IMG's grid; NaN where the low-resolution image is
%                  exactly 0 (computed only when asked for).
%     ZERO_FILLED  the magnitude of the inverse DFT of KSPACE as it is
%                  (computed only when asked for).
%     INFO         struct: ranges (the ranges used, given or detected, in
%                  KSPACE's own coordinates), mirrored and weighted (1x3
%                  logical per axis), seconds (struct of the times of the
%                  steps: ranges, filter, fft, multiply, extra_outputs).
%
%   Both MEX layouts give the same results: with the separate-planes build,
%   which cannot change complex arrays in place, the real and imaginary
%   parts are processed as real arrays (see HOMODYNE_FILTER).
%
%   Example:
%     [truth, k] = homodyne_phantom([128 128 32]);
%     k(:, 1:40, :) = 0;                       % ky = -64 .. -25 not acquired
%     [img, phase, zf] = homodyne_recon(k);    % ranges detected: y is [-24 63]
%     nrmse = @(a) norm(a(:) - abs(truth(:))) / norm(truth(:));
%     fprintf('zero filled %.3f, homodyne %.3f\n', nrmse(zf), nrmse(abs(img)));
%
%   See also HOMODYNE_FILTER, HOMODYNE_PHASE, HOMODYNE_MEX, HOMODYNE_PHANTOM.

  started = tic;
  if ~isfloat(kspace) || isempty(kspace)
    error('homodyne_recon: KSPACE must be a non-empty single or double array.');
  end
  if ~all(isfinite(kspace(:)))
    error('homodyne_recon: KSPACE holds NaN or Inf values.');
  end
  [ranges, options] = parse_options(varargin);
  sizes = [size(kspace, 1), size(kspace, 2), size(kspace, 3)];
  if isempty(ranges)
    ranges = detect_ranges(kspace);
  end
  if ~strcmp(options.Method, 'homodyne') || ~strcmp(options.Output, 'real')
    [img, phase, zero_filled, info] = core_recon(kspace, ranges, options, nargout);
    return;
  end
  [mex_ranges, mirrored] = plan_axes(ranges, sizes);
  info.ranges = ranges;
  info.mirrored = mirrored;
  info.weighted = ~cellfun(@isempty, mex_ranges);
  info.seconds.ranges = toc(started);

  step = tic;
  work = mirror_axes(unshared_single(kspace), find(mirrored));
  [block, work] = weight_kspace(work, mex_ranges{:});
  info.seconds.filter = toc(step);

  step = tic;
  work = centred_ifft3(work);
  lowres = centred_ifft3(block);
  info.seconds.fft = toc(step);

  step = tic;
  work = remove_phase(work, lowres);
  img = real(work);
  img(isnan(img)) = 0;   % no phase, and no signal, where the low-resolution image vanishes
  img = cast(mirror_axes(img, find(mirrored)), class(kspace));
  info.seconds.multiply = toc(step);

  step = tic;
  if nargout > 1
    phase = cast(mirror_axes(removed_phase(lowres, size(work)), find(mirrored)), class(kspace));
  end
  if nargout > 2
    zero_filled = abs(centred_ifft3(kspace));
  end
  info.seconds.extra_outputs = toc(step);
end

% RANGES as given ({} to detect them) and the options of the reconstruction
% core, with Method and Output checked here since they choose the path.
function [ranges, core] = parse_options(options)
  ranges = {};
  core = struct('Method', 'pocs', 'Output', 'real');
  names = {'Method', 'Output', 'Iterations', 'Tolerance', 'Threads', 'Constraint', 'Window', 'TransitionBand'};
  if mod(numel(options), 2) ~= 0
    error('homodyne:usage', 'homodyne_recon: options come as name/value pairs.');
  end
  for k = 1:2:numel(options)
    if ~ischar(options{k}) || ~any(strcmpi(options{k}, [{'Ranges'}, names]))
      error('homodyne:badOption', 'homodyne_recon: unknown option; the options are Ranges, %s.', strjoin(names, ', '));
    end
    if strcmpi(options{k}, 'Ranges')
      ranges = options{k + 1};
      if ~iscell(ranges) || numel(ranges) > 3
        error('homodyne:badOption', 'homodyne_recon: ''Ranges'' must be a cell {kx, ky, kz} of [] or [first last].');
      end
      ranges = [ranges(:)', cell(1, 3 - numel(ranges))];
    else
      core.(names{strcmpi(options{k}, names)}) = options{k + 1};
    end
  end
  choices = struct('Method', {{'pocs', 'homodyne'}}, 'Output', {{'real', 'magnitude', 'complex'}});
  for name = {'Method', 'Output'}
    value = core.(name{1});
    if ~ischar(value) || ~any(strcmpi(value, choices.(name{1})))
      error('homodyne:badOption', 'homodyne_recon: ''%s'' must be ''%s''.', name{1}, strjoin(choices.(name{1}), ''' or '''));
    end
    core.(name{1}) = lower(value);
  end
end

% The phase that 'multiply' takes off, recovered through the module itself:
% on data of ones it leaves cos(phase) for LOWRES and sin(phase) for
% -1i*LOWRES, whose real part is Im(LOWRES).
function phase = removed_phase(lowres, sizes)
  cosine = remove_phase(ones(sizes, 'single'), lowres);
  sine = remove_phase(ones(sizes, 'single'), -1i * lowres);
  phase = atan2(sine, cosine);
end
