#include "front/python/file_binding.hpp"

#include <complex>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include "front/python/core_lock.hpp"
#include "io/cfl.hpp"
#include "io/png_montage.hpp"
#include "io/raw_kspace.hpp"
#include "recon/phantom.hpp"
#include "recon/recon_error.hpp"

namespace py = pybind11;

namespace {

// A Fortran-order complex64 array of `dims` that owns `values`.
py::array owning_array(std::vector<Complex>&& values, std::vector<Index> dims)
{
    auto* owned = new std::vector<Complex>(std::move(values));
    const py::capsule free(owned, [](void* p) { delete static_cast<std::vector<Complex>*>(p); });
    return py::array_t<std::complex<float>, py::array::f_style>(std::vector<py::ssize_t>(dims.begin(), dims.end()),
                                                                  owned->data(), free);
}

// dims without trailing ones beyond the first `keep`.
std::vector<Index> trimmed(std::vector<Index> dims, std::size_t keep)
{
    while (dims.size() > keep && dims.back() == 1) {
        dims.pop_back();
    }
    return dims;
}

py::tuple read_ismrmrd(const std::string& path, bool remove_oversampling)
{
    RawReadOptions options;
    options.remove_oversampling = remove_oversampling;
    RawKspace scan = in_core([&] { return read_raw_kspace(path, options); });

    py::list ranges;
    for (const auto& range : scan.ranges) {
        ranges.append(range ? py::object(py::make_tuple(range->first, range->last)) : py::object(py::none()));
    }
    py::dict acq;
    acq["ranges"] = ranges;
    const Index coils = scan.shape.coils;
    acq["noise"] = owning_array(std::move(scan.noise), {scan.noise_samples, scan.noise_samples > 0 ? coils : 0});
    acq["noise_variance_scale"] = static_cast<double>(scan.noise_variance_scale);

    std::vector<Index> dims{scan.shape.n[0], scan.shape.n[1], scan.shape.n[2], coils};
    dims.insert(dims.end(), scan.counter_sizes.begin(), scan.counter_sizes.end());
    py::array kspace = owning_array(std::move(scan.kspace), trimmed(dims, 4));
    return py::make_tuple(kspace, acq, scan.warnings);
}

py::array read_cfl_array(const std::string& base)
{
    CflArray array = in_core([&] { return read_cfl(base); });
    return owning_array(std::move(array.values), trimmed(array.dims, 1));
}

void write_cfl_array(const std::string& base, const py::handle& values)
{
    using Array = py::array_t<std::complex<float>, py::array::f_style | py::array::forcecast>;
    const Array array = Array::ensure(values);
    if (!array) {
        throw py::type_error("write_cfl needs an array of numbers.");
    }
    std::vector<Index> dims(array.shape(), array.shape() + array.ndim());
    if (dims.empty()) {
        dims.push_back(1);
    }
    in_core([&] { write_cfl(base, dims, array.data()); });
}

void write_png(const std::string& path, const py::array& images)
{
    using Array = py::array_t<float, py::array::f_style | py::array::forcecast>;
    const py::object magnitudes = py::module_::import("numpy").attr("abs")(images);
    const Array array = Array::ensure(magnitudes);
    if (!array || array.ndim() == 0) {
        throw py::type_error("write_png needs an array of numbers of one dimension or more.");
    }
    ReconShape shape;
    for (py::ssize_t d = 0; d < array.ndim(); ++d) {
        Index& size = d < 3 ? shape.n[d] : d == 3 ? shape.coils : shape.volumes;
        size = d < 4 ? array.shape(d) : size * array.shape(d);
    }
    in_core([&] { write_png_montage(path, array.data(), shape); });
}

py::tuple phantom(const std::vector<Index>& sizes)
{
    if (sizes.size() < 2 || sizes.size() > 3) {
        throw ReconError("homodyne:badInput", "the phantom's shape must be (nx, ny) or (nx, ny, nz).");
    }
    const std::array<Index, 3> n{sizes[0], sizes[1], sizes.size() == 3 ? sizes[2] : 1};
    Phantom object = in_core([&] { return make_phantom(n); });
    return py::make_tuple(owning_array(std::move(object.image), sizes), owning_array(std::move(object.kspace), sizes));
}

}  // namespace

void bind_files(py::module_& module)
{
    module.def("read_ismrmrd", &read_ismrmrd, py::arg("path"), py::arg("remove_oversampling") = true);
    module.def("read_cfl", &read_cfl_array, py::arg("base"));
    module.def("write_cfl", &write_cfl_array, py::arg("base"), py::arg("array"));
    module.def("write_png", &write_png, py::arg("path"), py::arg("images"));
    module.def("phantom", &phantom, py::arg("shape"));
}
