#include "front/python/recon_binding.hpp"

#include <memory>

#include "front/python/core_lock.hpp"
#include "front/python/info_dict.hpp"
#include "front/python/kspace_array.hpp"
#include "front/python/option_values.hpp"
#include "front/python/python_errors.hpp"
#include "front/python/result_array.hpp"
#include "recon/info_value.hpp"
#include "recon/recon_call.hpp"

namespace py = pybind11;

namespace {

// The result's sizes in the input's axes: the core's, without the trailing
// ones it adds beyond the input's dimensions.
std::vector<Index> result_dims(const ReconCall& call, std::size_t input_dims)
{
    std::vector<Index> dims = call.result_dims;
    while (dims.size() > std::max<std::size_t>(input_dims, 1) && dims.back() == 1) {
        dims.pop_back();
    }
    return dims;
}

// (image, info) of `kspace` through `plan`; the array stays referenced by
// the caller for the whole call.
py::tuple run(const ReconPlan& plan, const py::object& kspace)
{
    const KspaceInput input = kspace_input_of(kspace);
    const ReconCall& call = plan.call();
    ResultArray image(result_dims(call, input.dims.size()), double_precision(py::reinterpret_borrow<py::array>(kspace)),
                      call.options.output == ReconOutput::complex);
    ReconBuffers buffers;
    buffers.image = image.values();
    const ReconInfo info = in_core([&] { return execute(plan, input, buffers); });
    const InfoValue description = describe(info, call);
    return py::make_tuple(image.finish(info.scale_exponent, "the image"), python_value_of(description));
}

// A plan whose FFTW plans are destroyed under the core's lock.
class LockedPlan {
public:
    // `keep_prepared`: execute reuses what prepare_call made of this very
    // k-space (one call). Otherwise nothing of it is kept, so every recon()
    // reads its argument afresh, even an array refilled in place.
    LockedPlan(const py::object& kspace, const py::dict& options, bool keep_prepared)
    {
        const KspaceInput input = kspace_input_of(kspace);
        const ReconSettings settings = settings_of(options);
        plan_ = in_core([&] {
            ReconCall call = prepare_call(settings, input);
            if (!keep_prepared) {
                call.prepared_data = nullptr;
                call.prepared_copy.reset();
            }
            return std::make_unique<ReconPlan>(std::move(call));
        });
    }
    LockedPlan(const LockedPlan&) = delete;
    LockedPlan& operator=(const LockedPlan&) = delete;
    ~LockedPlan()
    {
        in_core([&] { plan_.reset(); });
    }

    py::tuple recon(const py::object& kspace) const { return run(*plan_, kspace); }
    py::list warnings() const { return warning_list(plan_->call().warnings); }

private:
    std::unique_ptr<ReconPlan> plan_;
};

py::tuple recon(const py::object& kspace, const py::dict& options)
{
    const LockedPlan plan(kspace, options, true);
    const py::tuple result = plan.recon(kspace);
    return py::make_tuple(result[0], result[1], plan.warnings());
}

}  // namespace

void bind_recon(py::module_& module)
{
    module.def("recon", &recon, py::arg("kspace"), py::arg("options"),
               "(image, info, warnings) of kspace reconstructed with the options' dict.");
    py::class_<LockedPlan>(module, "Plan")
        .def(py::init([](const py::object& kspace_like, const py::dict& options) {
                 return std::make_unique<LockedPlan>(kspace_like, options, false);
             }),
             py::arg("kspace_like"), py::arg("options"))
        .def("recon", &LockedPlan::recon, py::arg("kspace"), "(image, info) of a k-space of the plan's size.")
        .def_property_readonly("warnings", &LockedPlan::warnings);
}
