% Homodyne partial-Fourier reconstruction toolbox.
%
% Reconstruction
%   homodyne_recon      - Partial-Fourier k-space in, real image out (ranges
%                         given or detected, missing part at either end).
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
%   ismrmrd_mex         - The raw-data reader behind read_ismrmrd_kspace.
%   build_homodyne_mex  - Build homodyne_mex and ismrmrd_mex with the host's MEX compiler.
%
% Test data and demonstration
%   homodyne_phantom    - 3-D head-like test object with a smooth phase, and its k-space.
%   demo_homodyne       - Reconstruct partial-Fourier phantoms, report errors and
%                         times, and write a picture.
