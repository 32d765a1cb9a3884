#include "recon/method_plans.hpp"

MethodPlans::MethodPlans(const ReconShape& shape, const ReconOptions& options)
    : pocs_(options.method == ReconMethod::pocs), output_(options.output)
{
    if (pocs_) {
        pocs_plan_ = plan_pocs(shape, options);
        pocs_transforms_ = std::make_unique<PocsTransforms>(pocs_plan_);
    } else {
        homodyne_ = plan_homodyne(shape, options.ranges);
        full_ = std::make_unique<VolumeTransform>(shape.n);
        block_ = std::make_unique<VolumeTransform>(homodyne_.block());
    }
}

VolumeReport MethodPlans::reconstruct(const Complex* kspace, float* image, float* phase, Complex* lowres) const
{
    return pocs_ ? pocs_volume(pocs_plan_, *pocs_transforms_, kspace, image, phase, lowres)
                 : homodyne_volume(homodyne_, *full_, *block_, kspace, output_, image, phase);
}
