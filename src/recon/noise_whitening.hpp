#pragma once
// Prewhitening of receive coils: the coils' noise covariance (from a noise-only
// scan or given), its check, and the transform that makes the coils' noise
// independent with unit power per sample, applied before any other step.
//
// Matrices are coils x coils, complex single precision, column-major (entry
// (i, j) at i + j * coils), as the M-code hands them over.

#include <complex>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

using CoilMatrix = std::vector<std::complex<float>>;

// Noise covariance of a noise-only scan, shape x, y, z, coils, volumes (all
// samples except the coil index are noise samples of the same distribution):
//   psi(i, j) = (1 / M) * sum_s n_i(s) * conj(n_j(s)),  M = voxels * volumes,
// accumulated in double and returned over 4^exponent, the largest diagonal
// entry in [1, 4) (exponent 0 for an all-zero scan), so that the squares of
// noise of any single-precision scale stay normal numbers. Throws
// homodyne:badInput when the scan's coil count differs from `coils` or the
// scan holds no sample.
struct ScaledCovariance {
    CoilMatrix matrix;
    int exponent = 0;
};
ScaledCovariance noise_covariance_from_scan(const std::complex<float>* scan, const ReconShape& scan_shape, Index coils);

// Checks a covariance given as a rows x columns matrix for `coils` coils and
// returns its whitening matrix W = inverse(L), L the lower Cholesky factor
// (psi = L * L^H), computed in double; W is lower triangular. Throws
// homodyne:badInput with a message naming the fault when the matrix is not
// coils x coils, holds a non-finite value, is not Hermitian (|psi(i,j) -
// conj(psi(j,i))| above 1e-4 of the largest diagonal entry) or not positive
// definite (a Cholesky pivot at or below 1e-7 of the largest diagonal entry).
// `name` names the matrix in the messages.
CoilMatrix noise_whitening_matrix(const std::complex<float>* covariance, Index rows, Index columns, Index coils,
                                  const std::string& name = "NoiseCovariance");

// Replaces the coil vector x of every voxel and volume by W * x, in place;
// `data` has `shape` (x, y, z, coils, volumes) and W is a lower-triangular
// whitening matrix of shape.coils coils. Coil planes are rewritten from the
// last coil to the first (W is lower triangular, so plane i needs only
// planes j <= i, which are still unchanged): plane_i = W(i,i) * plane_i,
// then plane_i += W(i,j) * plane_j for j = 0 .. i-1, in single precision.
// After it every coil's noise has unit power per sample, in the units of the
// covariance.
void whiten_coils(std::complex<float>* data, const ReconShape& shape, const CoilMatrix& whitening);

// Noise power per sample of each coil of data that were not whitened: the
// covariance's diagonal.
std::vector<float> coil_noise_powers(const CoilMatrix& covariance, Index coils);
