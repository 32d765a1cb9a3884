% Homodyne partial-Fourier reconstruction toolbox.
%
% Reconstruction
%   homodyne_recon      - Partial-Fourier k-space in, image out: POCS (default) or
%                         one-pass homodyne; real, magnitude or complex output.
%
% Raw data
%   read_ismrmrd_kspace - Centred k-space, sampled ranges and noise readouts from an
%                         ISMRMRD raw-data file.
%
% Building blocks that leave their inputs untouched
%   homodyne_filter     - Homodyne weighting of k-space and its central block.
%   homodyne_phase      - Take a low-resolution phase off an image.
%
% MEX module
%   homodyne_mex        - 'filter': homodyne weighting in place and the central block;
%                         'multiply': low-resolution phase removed in place.
%   homodyne_recon_mex  - 'reconstruct': the C++ core of homodyne_recon (FFTW).
%   ismrmrd_mex         - The raw-data reader behind read_ismrmrd_kspace.
%   build_homodyne_mex  - Build the MEX modules with the host's MEX compiler.
%
% Test data and demonstration
%   homodyne_phantom    - 3-D head-like test object with a smooth phase, and its k-space.
%   demo_homodyne       - Reconstruct partial-Fourier phantoms, report errors and
%                         times, and write a picture.
