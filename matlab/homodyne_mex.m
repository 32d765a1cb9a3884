%HOMODYNE_MEX  Fast building blocks of homodyne partial-Fourier reconstruction (MEX).
%
%   BLOCK = HOMODYNE_MEX('filter', DATA, KX, KY, KZ)
%     DATA is single-precision k-space, real or complex, centred: k = 0 sits
%     at index floor(n/2)+1 of each of the first three dimensions (x, y, z).
%     Every further dimension indexes independent volumes (coils, echoes, ...).
%     KX, KY, KZ are the sampled k-range [first last] of each axis (doubles, in
%     k coordinates, fractions truncated toward zero), or [] for an axis that
%     is fully sampled. The missing part of a partially sampled axis must lie
%     at its negative end: first < 0 < last with |first| < last, and at least
%     55 % of the symmetric extent sampled.
%
%     BLOCK is the symmetrically sampled central block, k = first .. -first on
%     each weighted axis (whole axes elsewhere), as a complex single copy of
%     DATA, not weighted.
%     DATA ITSELF is multiplied in place by the homodyne weights: per axis 0 up
%     to and including k = first, rising as 1 - t^2 to 1 at k = 0, as 1 + t^2
%     to 2 at k = -first, and 2 beyond. The weights of the weighted axes are
%     combined by their geometric mean.
%
%     An axis counts as fully sampled (kept whole, not weighted) when its range
%     is [] or |first + last| <= 1. A range that is not accepted (missing part
%     at the positive end, symmetric, or under 55 % sampled) leaves its axis
%     unweighted and keeps only the axis' first sample in BLOCK.
%
%   HOMODYNE_MEX('multiply', DATA, LOWRES)
%     DATA is a full-resolution single image, real or complex; LOWRES a
%     low-resolution single image (real or complex) with the same number of
%     dimensions, typically the inverse FFT of the block that 'filter' returns.
%     LOWRES is brought onto DATA's grid by trilinear interpolation (the first
%     and last samples of every axis aligned: data sample i of an axis of D
%     samples reads LOWRES at index i*(L-1)/(D-1), counted from 0) and every
%     sample d of DATA becomes, IN PLACE, the real part of d*conj(L)/|L|; the
%     imaginary part becomes 0 (DATA stays complex if it was). Where the
%     interpolated value is exactly 0 the result is NaN: no phase is invented.
%     Volume t of DATA (dimensions 4 and up) is corrected with volume t of
%     LOWRES. When LOWRES has exactly DATA's size it is used as it is. Nothing
%     is returned. LOWRES must have samples along every dimension and at least
%     DATA's number of volumes.
%
%   IN-PLACE RESULTS
%     The weighted or corrected data are written into the storage of the DATA argument, so
%     every variable sharing that storage changes too: after B = A, a call on
%     B also changes A, and a literal inside a loop changes for the next pass.
%     Give the command an unshared copy when the original is still needed:
%       work = complex(real(A), imag(A));     % complex A stays complex
%     In the default build (interleaved complex layout, -R2018a) the results
%     reach the caller for real and complex DATA. In the separate-planes
%     build (-R2017b) the host hands the module a private copy of complex
%     arrays, so only real DATA are weighted in place there, and BLOCK comes
%     back real when DATA are real.
%
%   Unknown commands (matching is exact and case-sensitive) do nothing and
%   return nothing. Bad inputs raise an error and leave DATA unchanged.
%
%   Example:
%     k = single(complex(randn(128, 96), randn(128, 96)));
%     k(1:24, :) = 0;                          % rows k = -64 .. -41 not acquired
%     work = complex(real(k), imag(k));
%     block = homodyne_mex('filter', work, [-40 63], [], []);
%     size(block)                              % 81 x 96
%     img = fftshift(ifft2(ifftshift(work)));
%     low = fftshift(ifft2(ifftshift(block)));
%     homodyne_mex('multiply', img, low);      % real image, imaginary part 0
%
%   See also BUILD_HOMODYNE_MEX.
