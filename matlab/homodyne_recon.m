function [img, phase, zero_filled, info] = homodyne_recon(kspace, varargin)
%HOMODYNE_RECON  Homodyne reconstruction of partial-Fourier k-space.
%
%   IMG = HOMODYNE_RECON(KSPACE)
%   IMG = HOMODYNE_RECON(KSPACE, 'Ranges', {KX, KY, KZ})
%   [IMG, PHASE, ZERO_FILLED, INFO] = HOMODYNE_RECON(...)
%
%   KSPACE is single or double, real or complex, finite, 2-D or 3-D k-space,
%   centred: k = 0 sits at index floor(n/2)+1 of each of the first three
%   dimensions (x, y, z), so that an axis of n samples covers k =
%   -floor(n/2) .. ceil(n/2)-1. Dimensions 4 and up index independent
%   volumes (coils, echoes, time), each reconstructed on its own; all share
%   the ranges. Sparse and other special matrices are read as full arrays.
%
%   Sampled ranges (the same rule as HOMODYNE_FILTER). Each of the first
%   three axes is either fully sampled or acquired over one contiguous block
%   [first last] of k coordinates. By default the ranges are detected: per
%   axis, the planes holding any non-zero sample in any volume; non-zero
%   planes with gaps between them are refused. 'Ranges', {KX, KY, KZ} gives
%   them instead, each [] (fully sampled) or [first last] in whole k
%   coordinates of any real numeric class; missing trailing entries count
%   as []. A range must be ordered and lie within its axis. An axis on which
%   at most one sampled plane lacks its mirror (k -> -k; the plane -n/2 of an
%   even axis has none) counts as fully sampled and is left whole and not
%   weighted, e.g. [-2 3] or [-4 2] on 8 samples. Any other range must
%   contain k = 0 and cover at least 55 % of its symmetric extent. The
%   missing part may lie at either end, and a range may start or end at
%   k = 0 (then k = 0 is weighted 1 and the phase comes from k = 0 alone).
%
%   Method. The k-space is copied (the caller's array is never changed),
%   scaled by a power of two to unit size (so that any finite double data
%   reach the single-precision module intact; the scale is restored
%   exactly) and converted to single. An axis whose missing part lies at
%   the positive end is mirrored (k -> -k: a flip plus a shift by one on an
%   even axis) so that HOMODYNE_MEX sees it missing at the negative end.
%   'filter' weights the data with the homodyne ramps and returns the
%   symmetric central block; both are inverse transformed (centred DFT over
%   the first three axes); 'multiply' takes the phase of the low-resolution
%   block image off the weighted image; the real part is the result, and
%   mirrored axes are mirrored back. On a fully sampled k-space nothing is
%   weighted and IMG is the magnitude of the plain inverse DFT.
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
%   Errors name the function and the argument at fault and carry an
%   identifier, shared by all functions of the toolbox:
%     homodyne:usage      wrong number or kind of arguments
%     homodyne:badInput   an array argument of the wrong class, size or values
%     homodyne:badRange   a range that is malformed or does not fit its axis
%     homodyne:badOption  an unknown option or an option value out of its domain
%     homodyne:sampling   sampling that cannot be reconstructed (gaps, no k = 0,
%                         under 55 %, no non-zero sample to detect ranges from)
%     homodyne:scale      a result beyond the range of its class, or wholly
%                         below its normal range (for single: pass double data)
%     homodyne:noModule   the MEX module is not built (run "make mex")
%     homodyne:noMemory   memory ran out
%     homodyne:internal   a fault of the toolbox, not of the call
%
%   Example:
%     [truth, k] = homodyne_phantom([128 128 32]);
%     k(:, 1:40, :) = 0;                       % ky = -64 .. -25 not acquired
%     [img, phase, zf] = homodyne_recon(k);    % ranges detected: y is [-24 63]
%     nrmse = @(a) norm(a(:) - abs(truth(:))) / norm(truth(:));
%     fprintf('zero filled %.3f, homodyne %.3f\n', nrmse(zf), nrmse(abs(img)));
%
%   See also HOMODYNE_FILTER, HOMODYNE_PHASE, HOMODYNE_MEX, HOMODYNE_PHANTOM.

  wrapper = 'homodyne_recon';
  if nargin < 1
    homodyne_error(wrapper, 'usage', ['usage: IMG = homodyne_recon(KSPACE) or ' ...
                   'homodyne_recon(KSPACE, ''Ranges'', {KX, KY, KZ}); see help homodyne_recon.']);
  end
  try
    started = tic;
    require_module(wrapper);
    kspace = checked_array(wrapper, 'KSPACE', kspace);
    % One row per option: name, default, validator, what a valid value is.
    options = parse_options(wrapper, {
      'Ranges', [], @(v) iscell(v) && numel(v) <= 3, 'a cell {KX, KY, KZ} of [] or [first last]'
    }, varargin);
    if iscell(options.Ranges)
      ranges = [options.Ranges(:)', cell(1, 3 - numel(options.Ranges))];
      labels = {'''Ranges'' x range', '''Ranges'' y range', '''Ranges'' z range'};
    else
      ranges = detect_ranges(wrapper, kspace);
      labels = {'the detected x range', 'the detected y range', 'the detected z range'};
    end
    plan = plan_axes(wrapper, ranges, labels, [size(kspace, 1), size(kspace, 2), size(kspace, 3)]);
    info.ranges = plan.ranges;
    info.mirrored = plan.mirrored;
    info.weighted = plan.weighted;
    info.seconds.ranges = toc(started);

    step = tic;
    [work, scale] = working_copy(kspace);
    work = mirror_axes(work, find(plan.mirrored));
    [block, work] = weight_kspace(work, plan.mex_ranges);
    info.seconds.filter = toc(step);

    step = tic;
    work = centred_ifft3(work);
    lowres = centred_ifft3(block);
    info.seconds.fft = toc(step);

    step = tic;
    work = remove_phase(work, lowres);
    img = real(work);
    img(isnan(img)) = 0;   % no phase, and no signal, where the low-resolution image vanishes
    img = restored(wrapper, 'IMG', mirror_axes(img, find(plan.mirrored)), scale, class(kspace), false);
    info.seconds.multiply = toc(step);

    step = tic;
    if nargout > 1
      phase = cast(mirror_axes(removed_phase(lowres, size(work)), find(plan.mirrored)), class(kspace));
    end
    if nargout > 2
      zero_filled = abs(centred_ifft3(kspace / scale));
      zero_filled = restored(wrapper, 'ZERO_FILLED', zero_filled, scale, class(kspace), false);
    end
    info.seconds.extra_outputs = toc(step);
  catch err
    homodyne_error(wrapper, err);
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
