#pragma once
// The plans of one call's reconstruction method, made once before any thread
// starts and shared by them: POCS's block, blend weights and transforms, or
// one-pass homodyne's filters and its two transforms.

#include <memory>

#include "recon/one_pass_homodyne.hpp"
#include "recon/pocs.hpp"

class MethodPlans {
public:
    // `options.output` is the form every coil image is written in.
    MethodPlans(const ReconShape& shape, const ReconOptions& options);

    // All three axes of the image's size.
    const VolumeTransform& all() const { return pocs_ ? pocs_transforms_->all : *full_; }

    // One coil image by the method, as pocs_volume and homodyne_volume say;
    // `lowres` (POCS only, may be null) receives the calibration image.
    VolumeReport reconstruct(const Complex* kspace, float* image, float* phase, Complex* lowres = nullptr) const;

private:
    bool pocs_;
    ReconOutput output_;
    HomodynePlan homodyne_;
    std::unique_ptr<VolumeTransform> full_, block_;
    PocsPlan pocs_plan_;
    std::unique_ptr<PocsTransforms> pocs_transforms_;
};
