%HOMODYNE_RECON_MEX  Reconstruction core of the toolbox: POCS and one-pass homodyne (MEX).
%
%   [IMAGE, INFO] = HOMODYNE_RECON_MEX('reconstruct', KSPACE)
%   [IMAGE, INFO] = HOMODYNE_RECON_MEX('reconstruct', KSPACE, OPTIONS)
%   [IMAGE, INFO, PHASE] = HOMODYNE_RECON_MEX('reconstruct', KSPACE, OPTIONS)
%   [IMAGE, INFO, PHASE, SENSITIVITIES] = HOMODYNE_RECON_MEX(...)
%
%   KSPACE is single, real or complex, centred (k = 0 at index floor(n/2)+1
%   of each of the first three dimensions), in the order x, y, z, coils,
%   volumes; every coil image of every volume is reconstructed on its own,
%   then the coils of a volume are combined (CoilCombine).
%   OPTIONS is a scalar struct with any of the fields (names in any case)
%   Method ('pocs', 'homodyne'), Output ('real', 'magnitude', 'complex'),
%   Iterations, Tolerance, Threads, Constraint ('auto', 'real',
%   'magnitude'), Window ('hann', 'tukey', 'box'), TransitionBand, and
%   Ranges ({KX, KY, KZ}, each [] for a fully sampled axis or [first last]
%   in k coordinates; absent: every axis fully sampled), CoilCombine
%   ('adaptive', 'rss', 'none': every coil image a result of its own),
%   NoiseAdaptive (true, false), NoiseCovariance (coils x coils, or a noise
%   scan of more than two dimensions with the coils along the fourth).
%   HOMODYNE_RECON
%   documents them and is the usual way in: it detects the ranges and takes
%   double data.
%
%   IMAGE is single, of KSPACE's size (1 along the coils when they are
%   combined), a new array: the inputs are never written. INFO is a struct
%   with one entry per coil image: method, constraint, iterations, change,
%   residual, echo_offset (3 x images), threads; and combination,
%   noise_source, noise_sigma (coils x volumes), adaptive (what the
%   noise-adaptive step did). SENSITIVITIES (complex single, KSPACE's size;
%   [] unless combined adaptively) are the coil sensitivities used. PHASE (single, real, of KSPACE's size) is the phase estimate
%   that the method used, in radians, 0 where none exists.
%
%   Errors carry an identifier: homodyne:usage (unknown command, argument
%   count), homodyne:badInput, homodyne:badOption (unknown option or value
%   out of its domain, named in the message), homodyne:badRange,
%   homodyne:sampling, homodyne:scale, homodyne:noMemory, homodyne:internal.
%
%   FFTs by FFTW (single precision, plans made once per call). Inside Octave
%   the FFTW library is shared with Octave's fft; its settings are left as
%   they are.
%
%   See also HOMODYNE_RECON, BUILD_HOMODYNE_MEX.
