#pragma once
// The plans of one call's reconstruction method, made once before any thread
// starts and shared by them: POCS's block, blend weights and transforms, or
// one-pass homodyne's filters and its two transforms.

#include <variant>

#include "recon/one_pass_homodyne.hpp"
#include "recon/pocs.hpp"
#include "recon/volume_report.hpp"

struct PocsMethod {
    PocsPlan plan;
    PocsTransforms transforms;
    explicit PocsMethod(PocsPlan pocs_plan) : plan(std::move(pocs_plan)), transforms(plan) {}
};

struct HomodyneMethod {
    HomodynePlan plan;
    VolumeTransform full, block;
    explicit HomodyneMethod(const HomodynePlan& homodyne_plan)
        : plan(homodyne_plan), full(homodyne_plan.n), block(homodyne_plan.block())
    {
    }
};

class MethodPlans {
public:
    MethodPlans(const ReconShape& shape, const ReconOptions& options);

    // All three axes of the image's size.
    const VolumeTransform& all() const;

    // One coil image by the method, in the form `output`, as pocs_volume and
    // homodyne_volume say: `kspace` read as k-space times 2^-`exponent`, the
    // image of that; `lowres` (POCS only, may be null) receives the
    // calibration image; POCS shares its blocks among `threads` threads.
    VolumeReport reconstruct(const Complex* kspace, int exponent, ReconOutput output, float* image, float* phase,
                             Complex* lowres, int threads) const;

private:
    std::variant<PocsMethod, HomodyneMethod> method_;
};
