% Homodyne partial-Fourier reconstruction toolbox.
%
% MEX module
%   homodyne_mex        - 'filter': homodyne weighting in place and the central block;
%                         'multiply': low-resolution phase removed in place.
%   build_homodyne_mex  - Build homodyne_mex with the host's MEX compiler.
%
% Demonstration
%   demo_homodyne       - Filter a generated partial-Fourier k-space and report.
