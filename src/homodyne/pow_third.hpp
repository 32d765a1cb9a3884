#pragma once
// The geometric mean of three weights, a row of x positions at a time:
// out[i] = (float)pow((double)p, e) with p = wx[i] * wy[j] * wz[k] formed in
// single precision in this order and the single-precision exponent
// e = (double)(1.0f / 3), bit for bit, for every float weight.
//
// The library pow costs as much as dozens of multiplications and does not
// vectorise. Since x^e y^e z^e = (xyz)^e, the roots of each axis's weights are
// taken once with pow, and a row needs per sample only the correction for
// the two roundings of the single-precision product: p = xyz (1 + d) with
// |d| < 2^-23, so p^e = x^e y^e z^e (1 + e d) to within 3e-15. pow is called
// only where that leaves the float in doubt (the root within 1023 units of a
// double of the midpoint between two floats: about one sample in 250000), or
// where p or the partial product wx * wy is not a normal float (p = +0 gives
// +0 without it; weights from ramps never get there otherwise).

#include <vector>

class PowThirdOfProducts {
public:
    PowThirdOfProducts(const std::vector<float>& wx, const std::vector<float>& wy, const std::vector<float>& wz);

    // Writes the nx = wx.size() values of the row at y position j and z
    // position k into out.
    void row(int j, int k, float* out) const;

private:
    // One axis: its weights, their roots w^e and reciprocals 1/w in double.
    struct AxisRoots {
        std::vector<float> weight;
        std::vector<double> root, inverse;
        explicit AxisRoots(const std::vector<float>& w);
    };
    AxisRoots x_, y_, z_;
};
