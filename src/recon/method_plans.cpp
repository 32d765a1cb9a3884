#include "recon/method_plans.hpp"

namespace {

std::variant<PocsMethod, HomodyneMethod> method_for(const ReconShape& shape, const ReconOptions& options)
{
    if (options.method == ReconMethod::pocs) {
        return std::variant<PocsMethod, HomodyneMethod>(std::in_place_type<PocsMethod>, plan_pocs(shape, options));
    }
    return std::variant<PocsMethod, HomodyneMethod>(std::in_place_type<HomodyneMethod>,
                                                    plan_homodyne(shape, options.ranges));
}

}  // namespace

MethodPlans::MethodPlans(const ReconShape& shape, const ReconOptions& options) : method_(method_for(shape, options)) {}

const VolumeTransform& MethodPlans::all() const
{
    if (const auto* pocs = std::get_if<PocsMethod>(&method_)) {
        return pocs->transforms.all;
    }
    return std::get<HomodyneMethod>(method_).full;
}

VolumeReport MethodPlans::reconstruct(const Complex* kspace, int exponent, ReconOutput output, float* image,
                                      float* phase, Complex* lowres, int threads) const
{
    if (const auto* pocs = std::get_if<PocsMethod>(&method_)) {
        return pocs_volume(pocs->plan, pocs->transforms, kspace, exponent, output, image, phase, lowres, threads);
    }
    const HomodyneMethod& homodyne = std::get<HomodyneMethod>(method_);
    return homodyne_volume(homodyne.plan, homodyne.full, homodyne.block, kspace, exponent, output, image, phase);
}
