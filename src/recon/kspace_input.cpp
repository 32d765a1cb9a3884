#include "recon/kspace_input.hpp"

#include <cfloat>
#include <cmath>

#include "recon/largest_part.hpp"
#include "recon/recon_error.hpp"

namespace {

// Calls row(first offset, count, x stride, canonical offset) for every row
// along x of the canonical order.
template <typename Row>
void for_each_row(const ArrayLayout& layout, const std::vector<Index>& strides, Row row)
{
    const ReconShape& s = layout.shape;
    Index canonical = 0;
    for (Index v = 0; v < s.volumes; ++v) {
        for (Index c = 0; c < s.coils; ++c) {
            for (Index z = 0; z < s.n[2]; ++z) {
                for (Index y = 0; y < s.n[1]; ++y, canonical += s.n[0]) {
                    row(layout.offset(strides, 0, y, z, c, v), s.n[0], strides[0], canonical);
                }
            }
        }
    }
}

// Calls visit(re, im, canonical index) for every sample, read as T.
template <typename T, typename Visit>
void visit_samples(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides,
                   Visit visit)
{
    const bool interleaved = input.type == KspaceInput::Type::complex_float ||
                             input.type == KspaceInput::Type::complex_double;
    const T* data = static_cast<const T*>(input.data);
    const T* imag = static_cast<const T*>(input.imag);
    for_each_row(layout, strides, [&](Index at, Index count, Index step, Index canonical) {
        for (Index x = 0; x < count; ++x, at += step) {
            if (interleaved) {
                visit(data[2 * at], data[2 * at + 1], canonical + x);
            } else {
                visit(data[at], imag != nullptr ? imag[at] : T(0), canonical + x);
            }
        }
    });
}

template <typename Visit>
void visit_any(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides, Visit visit)
{
    if (input.type == KspaceInput::Type::complex_double || input.type == KspaceInput::Type::real_double) {
        visit_samples<double>(input, layout, strides, visit);
    } else {
        visit_samples<float>(input, layout, strides, visit);
    }
}

}  // namespace

std::vector<Index> strides_of(const KspaceInput& input, const ArrayLayout& layout)
{
    if (input.strides.empty()) {
        return layout.column_major();
    }
    std::vector<Index> strides = input.strides;
    strides.resize(layout.dims.size(), 0);
    return strides;
}

int unit_exponent_of(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides)
{
    double largest = 0.0;
    bool finite = true;
    if (input.type == KspaceInput::Type::complex_float && layout.canonical_in_memory(strides)) {
        largest = largest_part(static_cast<const Complex*>(input.data), layout.shape.samples());
        finite = std::isfinite(largest);
    } else {
        visit_any(input, layout, strides, [&](auto re, auto im, Index) {
            const double a = std::fabs(static_cast<double>(re)), b = std::fabs(static_cast<double>(im));
            finite = finite && a <= DBL_MAX && b <= DBL_MAX;
            largest = std::max(largest, std::max(a, b));
        });
    }
    if (!finite) {
        throw ReconError("homodyne:badInput", input.name + " holds NaN or Inf values.");
    }
    if (largest == 0.0) {
        return 0;
    }
    int e = 0;
    std::frexp(largest, &e);
    return e - 1;
}

bool usable_in_place(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides,
                     int exponent)
{
    return exponent == 0 && input.type == KspaceInput::Type::complex_float && layout.canonical_in_memory(strides);
}

void gather_canonical(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides,
                      int exponent, Complex* out)
{
    // A power of two changes no digit; in double first, so that data beyond
    // single precision arrive at unit scale intact.
    visit_any(input, layout, strides, [&](auto re, auto im, Index i) {
        out[i] = Complex(static_cast<float>(std::ldexp(static_cast<double>(re), -exponent)),
                         static_cast<float>(std::ldexp(static_cast<double>(im), -exponent)));
    });
}
