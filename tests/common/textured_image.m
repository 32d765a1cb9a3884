function textured = textured_image(image, seed)
%TEXTURED_IMAGE  An anatomy-like 2-D image: soft edges and tissue texture.
%   TEXTURED = TEXTURED_IMAGE(IMAGE, SEED) multiplies the complex 2-D IMAGE
%   by exp(0.2 t), t a smooth random field (Gaussian correlation of 3 pixels,
%   unit sd, drawn from randn with state SEED; the caller's randn state is
%   kept), and blurs the product by a Gaussian of 1.5 pixels (periodic).
%   Unlike a phantom of sharp ellipses, most of its energy above a quarter
%   of the k-space extent is below the noise at SNR 20, as in anatomy, so
%   zero filling competes with partial-Fourier methods there. Double.
  n = size(image);
  kept = randn('state');
  randn('state', seed);
  field = randn(n);
  randn('state', kept);
  t = real(ifft2(fft2(field) .* gaussian_response(n, 3)));
  t = t / std(t(:));
  textured = ifft2(fft2(double(image) .* exp(0.2 * t)) .* gaussian_response(n, 1.5));
end

% The DFT of a periodic Gaussian of sd `width` pixels, unit sum.
function g = gaussian_response(n, width)
  [u, v] = ndgrid(min(0:n(1) - 1, n(1):-1:1) / n(1), min(0:n(2) - 1, n(2):-1:1) / n(2));
  g = exp(-2 * pi ^ 2 * width ^ 2 * (u .^ 2 + v .^ 2));
end
