%HOMODYNE_RECON_MEX  Reconstruction core of the toolbox: POCS and one-pass homodyne (MEX).
%
%   [IMAGE, INFO, PHASE, ZERO_FILLED, SENSITIVITIES] = ...
%       HOMODYNE_RECON_MEX('reconstruct', KSPACE, name, value, ...)
%
%   The module behind HOMODYNE_RECON, which documents KSPACE, the options
%   and the results; it takes the same options with the same defaults,
%   checks and messages, and returns the results in the order above
%   (HOMODYNE_RECON's order is IMG, PHASE, ZERO_FILLED, INFO,
%   SENSITIVITIES), computing PHASE, ZERO_FILLED and SENSITIVITIES only when
%   asked for. KSPACE is single or double, real or complex; the results are
%   new arrays of its class: the inputs are never written. Sparse KSPACE is
%   refused (HOMODYNE_RECON makes it full). Warnings come back in
%   INFO.warnings (identifier, message) instead of being raised.
%
%   [BLOCK, WEIGHTED] = HOMODYNE_RECON_MEX('filter', KSPACE, KX, KY, KZ)
%   CORRECTED = HOMODYNE_RECON_MEX('phase', IMAGE, LOWRES)
%     The weighting and phase steps of one-pass homodyne on their own, as
%     the reconstruction runs them; HOMODYNE_FILTER and HOMODYNE_PHASE
%     document them. A build with separate complex planes returns complex
%     results whose imaginary part is all zero as real arrays; the wrappers
%     make them complex again.
%
%   The same core runs the command line homodyne-recon and Python's
%   homodyne.recon: one option table, one validation, one reconstruction.
%
%   Errors carry an identifier: homodyne:usage (unknown command, argument
%   count, options not in pairs), homodyne:badInput, homodyne:badOption
%   (unknown option, with the closest name, or a value out of its domain),
%   homodyne:badRange, homodyne:sampling, homodyne:scale, homodyne:noMemory,
%   homodyne:internal.
%
%   FFTs by FFTW (single precision). Inside Octave the FFTW library is
%   shared with Octave's fft; its settings are left as they are.
%
%   See also HOMODYNE_RECON, BUILD_HOMODYNE_MEX.
