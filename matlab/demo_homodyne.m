%DEMO_HOMODYNE  Homodyne filtering of a generated partial-Fourier k-space.
%   Builds a smooth 3-D test object with a varying phase, takes its centred
%   k-space, discards the first 3/8 of the ky lines (5/8 partial Fourier),
%   and runs the "filter" command: it prints the central block it returns,
%   the weights it applied along ky, and how long the call took.

nx = 128; ny = 128; nz = 32;
[x, y, z] = ndgrid(linspace(-1, 1, nx), linspace(-1, 1, ny), linspace(-1, 1, nz));
object = double((x / 0.8).^2 + (y / 0.9).^2 + (z / 0.9).^2 <= 1) ...
         + 0.5 * double(((x - 0.2) / 0.3).^2 + (y / 0.4).^2 + (z / 0.5).^2 <= 1);
image = object .* exp(1i * pi * 0.5 * (x + y));
kspace = single(fftshift(fftn(ifftshift(image))));

first = -ceil(ny / 2) + round(3 / 8 * ny);   % lowest acquired ky coordinate
last = ceil(ny / 2) - 1;
kspace(:, 1:(first + floor(ny / 2)), :) = 0;
fprintf('k-space %d x %d x %d, ky acquired from %d to %d (%.1f %% of the lines)\n', ...
        nx, ny, nz, first, last, 100 * (last - first + 1) / ny);

work = complex(real(kspace), imag(kspace));   % the command weights its input in place
tic;
block = homodyne_mex('filter', work, [], [first last], []);
elapsed = toc;

fprintf('central block: %d x %d x %d (ky %d .. %d)\n', size(block, 1), size(block, 2), size(block, 3), first, -first);
weights = abs(double(work(nx / 2 + 1, :, nz / 2 + 1))) ./ max(abs(double(kspace(nx / 2 + 1, :, nz / 2 + 1))), eps);
ky = (0:ny - 1) - floor(ny / 2);
shown = ky >= first - 1 & ky <= -first + 1 & mod(ky, 8) == 0;
fprintf('ky weight at k = %4d: %.4f\n', [ky(shown); weights(shown)]);
fprintf('filter call: %.1f ms\n', 1000 * elapsed);
