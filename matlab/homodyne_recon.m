function [img, phase, zero_filled, info, sensitivities] = homodyne_recon(kspace, varargin)
%HOMODYNE_RECON  Partial-Fourier reconstruction: POCS or one-pass homodyne.
%
%   IMG = HOMODYNE_RECON(KSPACE)
%   IMG = HOMODYNE_RECON(KSPACE, 'Method', 'pocs' | 'homodyne', 'Output', ...)
%   IMG = HOMODYNE_RECON(KSPACE, 'Coils', DIM, 'NoiseCovariance', C, ...)
%   [IMG, PHASE, ZERO_FILLED, INFO, SENSITIVITIES] = HOMODYNE_RECON(...)
%
%   KSPACE is single or double, real or complex, finite, 2-D or 3-D k-space,
%   centred: k = 0 sits at index floor(n/2)+1 of each of the first three
%   dimensions (x, y, z), so that an axis of n samples covers k =
%   -floor(n/2) .. ceil(n/2)-1. Dimensions 4 and up index independent
%   volumes (coils, echoes, time), each reconstructed on its own; all share
%   the ranges. Sparse and other special matrices are read as full arrays.
%   The data are scaled by a power of two to unit size before the
%   single-precision computation and the scale is restored exactly, so any
%   finite double data give the image of the same data at unit scale.
%
%   Sampled ranges (for one-pass homodyne the rule of HOMODYNE_FILTER). Each
%   of the first three axes is either fully sampled or acquired over one
%   contiguous block [first last] of k coordinates. They come from one of:
%     'Ranges', {KX, KY, KZ}: each [] (fully sampled) or [first last] in
%       whole k coordinates of any real numeric class; missing trailing
%       entries count as [].
%     'PartialFourier', {FX, FY, FZ}: each [] or the acquired fraction of the
%       axis as scan protocols state it (5/8, 6/8, 7/8; 0.5 to 1). A positive
%       fraction misses the negative end of k, a negative one (-5/8) the
%       positive end. An axis of n samples keeps n - floor((1 - |F|) n)
%       planes (a fractional line counts as acquired): 5/8 of 128 is
%       [-16 63], -5/8 of 100 is [-50 12].
%     'Acquisition', ACQ, or ACQ as the second argument: the struct of
%       READ_ISMRMRD_KSPACE; its ranges are used unless 'Ranges' or
%       'PartialFourier' is given; unless the call names 'Coils', its coils
%       (dimension 4, when more than one) are combined as with 'Coils', 4;
%       unless it names 'Coils' or 'NoiseCovariance' (even as []), its
%       noise scan, scaled by ACQ.noise_variance_scale, prewhitens them.
%     detection, when none of these is given. Per axis, first the planes
%       holding any non-zero sample in any volume (non-zero planes with gaps
%       between them are refused); where no plane is all zero, the plane
%       energies (summed over the other axes and all volumes): unacquired
%       lines that hold noise or filler values are planes at the noise or
%       filler floor whose mirror planes (k -> -k) carry more than 10x their
%       energy, counted from the end of the axis inward, up to a step to
%       the acquired block (the next plane inward holds 5x more). On phantoms
%       with noise at SNR 20 or filler of 1e-6 of the peak, such planes held
%       at most 0.012 of their mirrors' energy; fully sampled axes, clean,
%       noisy or with echoes shifted by up to 6 samples (planes down to
%       0.035 of their mirrors, but without a step), gave none. When no
%       plane qualifies but one at |k| >= n/8 holds under 0.4 of its
%       mirror's energy and under 1/3 of the next plane inward, the warning
%       homodyne:oneSided says so (at SNR 3 it caught 5 of the 6 blocks
%       missed; no fully sampled case gave it). Energies are not judged with fewer than 16
%       samples per plane.
%   Given ranges are checked against the data (homodyne:badRange): planes
%   outside a range that carry data (at least 0.6 of the energy of their
%   mirror planes: a range of another axis, or too narrow; measured 0.96
%   for a y range given as x, at most 0.017 for unacquired lines holding
%   noise at SNR 20 and 0.44 at SNR 3), and all-zero
%   planes at an end of a range (wider than the data; the unpaired plane
%   -n/2 of an even axis may be zero), or for an axis given as [], at one
%   end only (two planes or more beyond those at the other end). Planes outside the ranges that hold
%   only noise or filler are set to zero before reconstruction.
%   Only one of 'Ranges' and 'PartialFourier' may be given.
%   A range must be ordered and lie within its axis. An axis on which
%   at most one sampled plane lacks its mirror (k -> -k; the plane -n/2 of an
%   even axis has none) counts as fully sampled and is left whole and not
%   weighted, e.g. [-2 3] or [-4 2] on 8 samples. Any other range must
%   contain k = 0 and, for one-pass homodyne, cover at least 55 % of its
%   symmetric extent. The missing part may lie at either end, on one, two
%   or three axes, and a range may start or end at k = 0 (one-pass: then
%   k = 0 gets the homodyne weight 1 and the phase comes from k = 0 alone).
%
%   Coils or slices along dimension 3. The first three dimensions are taken
%   as kx, ky, kz. 2-D images of coils or slices stored as nx x ny x nc would
%   be transformed across the coils; the warning homodyne:zLooksLikeVolumes
%   says when dimension 3 looks like that: 4 to 32 planes, z fully sampled,
%   x and y each with a plane near k = 0 (|k| <= n/8) holding at least 4x
%   their median plane, and no z plane within |kz| <= floor(nz/8) holding
%   1.8x the median z plane (measured on phantoms of 4 to 32 planes: true
%   3-D k-space 2.5-24x, 3.8x or more with its kz peak moved by up to nz/8
%   planes (nz >= 8); stacked slice and coil k-spaces 0.97-1.45x, 1.81x at
%   4 coils of random gains, which is missed). Pass such data with
%   'Dims', 2 (slices) or 'Coils', 3 (coils).
%
%   Options (name/value pairs, names in any case):
%     'Method'      'pocs' (default) or 'homodyne'. POCS alternates two
%                   projections: the image takes the phase estimated from
%                   the symmetric centre, and the measured samples are put
%                   back. It is the default because it gives the better
%                   image: on the demo phantom (256 x 256 x 64) the NRMSE of
%                   the magnitude is 2-6x lower than one-pass homodyne's
%                   with one partial axis and about 4x lower with ky 5/8 and
%                   kz 3/4, and it keeps the image phase. One-pass homodyne
%                   assumes a locally constant phase; wherever the phase has
%                   a gradient, detail leaks out of the real part.
%                   'homodyne' with 'NoiseAdaptive' false is the plain
%                   one-pass result.
%     'Output'      'real' (default): the image along its estimated phase,
%                   Re(x e^{-i phi}), which may dip below 0 where the phase
%                   estimate is off; 'magnitude': |x|; 'complex': the image
%                   with its phase (POCS: its final estimate; one-pass: the
%                   real image times the low-resolution phase), left as
%                   measured by 'NoiseAdaptive'.
%     'Iterations'  POCS: at most this many iterations (default 20; the
%                   error was still falling between 10 and 20 on the
%                   phantoms and flat or rising beyond 40).
%     'Tolerance'   POCS: a block of lines (one partial axis) or planes
%                   (two) stops once its relative change in an iteration
%                   falls below this (default 2e-4), the change taken
%                   relative to the block's own norm or, for a block
%                   weaker than its share of the image (background), to
%                   that share; 0 runs exactly 'Iterations'.
%     'Threads'     threads of the call (default 0: one per core): volumes
%                   reconstructed at once, and threads left over share the
%                   blocks of one image. The result does not depend on it.
%     'Constraint'  POCS image constraint: 'real' keeps Re(x e^{-i phi})
%                   e^{i phi} (right for images that ring across zero, 3-4x
%                   lower error there), 'magnitude' keeps |x| e^{i phi}
%                   (right for images that do not, 2-3x lower error on sharp
%                   phantoms without ringing and with two partial axes);
%                   'auto' (default): with one partial axis, runs 5
%                   iterations of each and keeps the real form only when
%                   its data residual is below 0.35 of the magnitude form's
%                   (measured after 5 iterations: 0.15-0.2 on images that
%                   ring; 0.45-0.8 on every case where the magnitude form
%                   was better); with two or three, the magnitude form:
%                   there samples whose mirrors are missing too carry no
%                   data the real form could use, while the magnitude form
%                   still recovers part of them (on 3-D phantoms, ky 5/8 and
%                   kz 3/4: 0.06 noiseless error against 0.17, single coil
%                   and per coil of 8, where the residual test chose the
%                   real form for 5 of the 8 coils).
%     'Window'      POCS: the window over the symmetric centre from which
%                   the phase is estimated: 'hann' (default; 4-8x lower
%                   error than 'tukey' on smooth objects, within 20-50 % of
%                   it on sharp ones), 'tukey' (flat inner half) or 'box'
%                   (1.5-3x the error of 'hann').
%     'TransitionBand'  POCS: measured samples within this many samples of
%                   the cut edge are blended with the estimate (rising as
%                   sin^2); default 0, all measured samples kept as they are.
%   An echo away from the nominal centre (a linear phase ramp) is followed:
%   POCS centres its phase window on the k-space peak of each partial axis.
%
%   Receive coils and noise:
%     'Coils'       DIM, the dimension (3 or higher) that holds the receive
%                   coils. The result is one combined image per remaining
%                   volume: size 1 along DIM, for both methods and every
%                   'Output'. 'Coils', 3 makes the data 2-D ('Dims', 2).
%                   Without it, dimensions 4 and up are independent volumes.
%     'CoilCombine' 'adaptive' (default): every coil is reconstructed on its
%                   own, then the coils are combined with sensitivities
%                   estimated from their calibration images (the windowed
%                   symmetric centre; the dominant eigenvector of the coils'
%                   covariance over 5 x 5 voxels), x = sum conj(S_c) x_c.
%                   The result carries the phase of the strongest coil.
%                   'rss': the root sum of squares of the coil results, as
%                   common practice does (no phase).
%                   Why per coil, then combine: the partial-Fourier step
%                   needs a smooth phase, and a combined image's phase mixes
%                   the coils' phases where their sensitivities overlap;
%                   per-coil POCS then combination gave 1.4-5x lower
%                   noiseless error than combination first on 8-coil
%                   phantoms, the sensitivities 7-17 % lower error than the
%                   calibration images normalised by their root sum of
%                   squares. On the bench's 8-coil phantom slices (ky 5/8
%                   and 3/4) at SNR 20 the adaptive combination has 0.47-
%                   0.48x the error of the fully sampled RSS image and
%                   0.44-0.48x that of bart's per-coil homodyne + RSS, where
%                   per-coil POCS + RSS has 0.80-0.83x the floor (make
%                   bench).
%     'NoiseCovariance'  the coils' noise covariance (coils x coils), or a
%                   noise-only scan with the coils along DIM. The coils are
%                   prewhitened before anything else (scaled so that the
%                   data keep their units); the noise level comes from it.
%                   Without 'Coils', a scalar is the noise power per sample.
%     'NoiseAdaptive'  true (default) or false. Weights that leave
%                   noiseless data alone (under 0.1 % change on the bench)
%                   and treat measured data alike whatever was left out, so
%                   that an image never comes out cleaner because less of
%                   it was measured: the fully sampled k-space through the
%                   same call gets the same treatment.
%                   - K-space: after the partial-Fourier step every sample
%                   is weighted by max(0, 1 - f sigma^2 / P), sigma^2 the
%                   noise power per sample, P a power smoothed over 5
%                   samples per axis: a measured sample's own (f = 1, the
%                   Wiener weight: samples below the noise, such as the
%                   high frequencies of smooth anatomy, are damped), a
%                   synthesised sample's partner's at -k when that was
%                   measured (f = 2 after the real form, whose synthesis
%                   repeats the partner's noise coherently, 1 after the
%                   magnitude form).
%                   - 'Output' 'magnitude': then the image's component at
%                   right angles to the estimated phase, signal only where
%                   that phase is wrong and noise elsewhere, is weighted by
%                   max(0, 1 - q / B), B its power over 5 voxels per axis,
%                   q its noise power. 'real' drops that component anyway.
%                   On fully sampled data the phase for both is that of
%                   the centre under the 'Window', a quarter of every axis
%                   of 8 samples or more (the symmetric centre of a 5/8
%                   acquisition), as partial data take theirs from their
%                   symmetric centre.
%                   - 'Output' 'complex' is left as measured (no weight;
%                   sigma is still estimated and reported): the phase keeps
%                   its detail. A line 2 samples across y with +0.5 rad
%                   kept 100 % of its contrast (74-82 % when the quadrature
%                   weight still ran on complex output).
%                   It runs once on the combined image ('adaptive'), else
%                   on every coil image. Measured (make bench, one run), the
%                   error of the magnitude against the noiseless image,
%                   over the fully sampled noisy image (the floor), single
%                   coil at SNR 20: median 0.91 (0.36-1.14; the 3-D phantom
%                   with two partial axes 1.14, its noiseless error alone
%                   is 0.8 of the floor; smooth anatomy-like slices 0.36-
%                   0.38, sharp phantom slices 0.89-0.96); the same call on
%                   the fully sampled data 0.77 (median), so partial data
%                   stay 5-170 % above it (8 coils: 22 % or more). Without
%                   the k-space weight on measured samples, partial data
%                   came out 11-12 % cleaner than the fully sampled data on
%                   the anatomy-like slices.
%                   Why on by default, and when to turn it off: it lowers
%                   the error of every magnitude and real image with noise,
%                   fully sampled or not, and a comparison of protocols
%                   through this call compares like with like. But it
%                   changes the noise: the magnitude's noise is no longer
%                   Rician (the quadrature noise is shed, so the noise
%                   floor of dark voxels falls towards that of a real
%                   image), it is correlated over a few voxels, and signal
%                   below the noise is shrunk towards 0 rather than left
%                   noisy. Fits of magnitude series that model Rician noise
%                   or rely on low-signal points (diffusion at high b,
%                   relaxometry tails) should use 'NoiseAdaptive', false
%                   (or complex output) and the same setting for every
%                   protocol compared. sigma
%                   comes from 'NoiseCovariance', else it is estimated per
%                   coil image from the data (a high-pass of the acquired
%                   block, robustly fitted: within 6 % on phantoms and
%                   anatomy at SNR 20 and 50; images of fewer than 1024
%                   samples are not weighted, and fully sampled ones keep
%                   their own phase); it is reported in INFO for fully
%                   sampled data too.
%                   The default is the same for every method, output and
%                   front end (the command line and Python too).
%     'Dims'        2 or 3 (default; 2 with 'Coils', 3): the number of
%                   spatial dimensions. With 2, dimension 3 onward are coils
%                   or volumes, never a transformed axis.
%
%   Outputs, all of KSPACE's class and of its size (size 1 along 'Coils'):
%     IMG          the image in the form of 'Output'. Where the
%                  low-resolution image is exactly 0 no phase exists: the
%                  one-pass image is 0 there, and POCS takes phase 0 there
%                  (it keeps the real part). No output holds NaN or Inf.
%     PHASE        the phase estimate the method used, in radians (POCS:
%                  from the windowed centre; one-pass: the low-resolution
%                  phase; fully sampled data weighted by 'NoiseAdaptive',
%                  real or magnitude output: that of the centre a quarter
%                  of every axis wide), 0 where none exists. Computed only
%                  when asked for.
%     ZERO_FILLED  the magnitude of the inverse DFT of KSPACE with the
%                  planes outside the ranges zero (KSPACE as it is when
%                  they hold only zeros), the root sum of squares over the
%                  coils (computed only when asked for).
%     INFO         struct: ranges (the ranges used, given or detected, in
%                  KSPACE's own coordinates), detection (1x3 struct array,
%                  per axis: axis 'x', 'y' or 'z'; method 'zeros', 'energy'
%                  or 'full' (detected) or 'given'; range; ratio, the energy
%                  of the planes outside the range relative to their mirror
%                  planes, for 'full' the lowest such ratio of a plane near
%                  an end, NaN where not judged; one_sided), warnings (struct
%                  array: identifier, message; also raised as warnings), and
%                  per coil image:
%                  method, constraint (the form kept), iterations (3 x
%                  images: the fewest, median and most that POCS's blocks
%                  ran), change (the largest last relative change of a
%                  block, as 'Tolerance' measures it), residual (relative data residual of the last
%                  projections), echo_offset (3 x
%                  images: the k-space peak per partial axis), threads,
%                  combination ('adaptive', 'rss' or 'none'), noise_source
%                  ('covariance', 'noise scan', 'estimated' or 'none'),
%                  noise_sigma (coils x volumes: sigma per k-space sample of
%                  every coil before prewhitening), adaptive (applied_to:
%                  'combined image', 'each coil image' or 'none'; sigma: the
%                  noise level it weighted with, per weighted image, for the
%                  combined image that of the combination; steps: the
%                  weights that acted, 'measured samples', then
%                  ', synthesised samples' where samples were missing and
%                  ', quadrature component' for magnitude output, or
%                  'none'; measured_weight: the mean weight of the measured
%                  samples; mean_weight of the weighted synthesised
%                  samples; removed: the fraction of them weighted 0;
%                  quadrature_weight: the mean weight of the quadrature
%                  component) and seconds.total. The command line writes
%                  method, combination, noise_source, noise_sigma,
%                  adaptive.applied_to, adaptive.steps and adaptive.sigma
%                  into the meta attributes of its ISMRMRD images, with the
%                  same text.
%     SENSITIVITIES  with 'CoilCombine' 'adaptive': the coil sensitivities
%                  used (complex, KSPACE's size, unit length per voxel),
%                  else []; computed only when asked for.
%
%   Both MEX layouts give the same results. Everything runs in the C++ core
%   (HOMODYNE_RECON_MEX, which never writes into its inputs), the same core
%   as the command line homodyne-recon and Python's homodyne.recon, which
%   take the same options with the same defaults and give the same image
%   (bit for bit for one-pass homodyne). POCS transforms the fully sampled
%   axes once; the problem then falls apart into lines (one partial axis)
%   or planes (two), which it iterates a block at a time in cache, every
%   block stopping on its own (three partial axes: the whole volume at
%   once). The blocks' FFTs are planned by timing (FFTW_MEASURE): the first
%   call for a new image size and set of partial axes in a session spends
%   a fraction of a second planning (256 x 256 x 64 here); later calls
%   reuse the plans. Measured plans may differ between sessions,
%   so POCS results may differ between sessions by single-precision
%   rounding; within a session they are repeatable.
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
%     [img, ~, zf] = homodyne_recon(k, 'Output', 'magnitude');   % POCS; y is [-24 63]
%     one_pass = homodyne_recon(k, 'Method', 'homodyne');
%     nrmse = @(a) norm(abs(a(:)) - abs(truth(:))) / norm(truth(:));
%     fprintf('zero filled %.3f, one-pass %.3f, POCS %.3f\n', nrmse(zf), nrmse(one_pass), nrmse(img));
%
%   See also HOMODYNE_RECON_MEX, HOMODYNE_FILTER, HOMODYNE_PHASE, HOMODYNE_MEX, HOMODYNE_PHANTOM.

  wrapper = 'homodyne_recon';
  if nargin < 1
    homodyne_error(wrapper, 'usage', ['usage: IMG = homodyne_recon(KSPACE) or ' ...
                   'homodyne_recon(KSPACE, ''Method'', ''pocs'', ...); see help homodyne_recon.']);
  end
  try
    require_module(wrapper);
    if ~isempty(varargin) && isstruct(varargin{1})
      varargin = [{'Acquisition'}, varargin];   % homodyne_recon(KSPACE, ACQ, ...)
    end
    % The module returns IMAGE, INFO, PHASE, ZERO_FILLED, SENSITIVITIES and
    % computes only those asked for; INFO always, for its warnings.
    results = cell(1, max(2, nargout + (nargout < 4)));
    [results{:}] = homodyne_recon_mex('reconstruct', full_array(kspace), varargin{:});
    info = results{2};
    for w = info.warnings
      warning(w.identifier, '%s: %s', wrapper, w.message);
    end
    img = results{1};
    results(end + 1:5) = {[]};
    [phase, zero_filled, sensitivities] = results{3:5};
  catch err
    homodyne_error(wrapper, err);
  end
end
