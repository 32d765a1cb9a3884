#include "front/python/info_dict.hpp"

#include <pybind11/numpy.h>

namespace py = pybind11;

py::object python_value_of(const InfoValue& value)
{
    switch (value.kind) {
    case InfoValue::Kind::text:
        return py::str(value.text);
    case InfoValue::Kind::flag:
        return py::bool_(value.flag);
    case InfoValue::Kind::list: {
        py::list list;
        for (const InfoValue& item : value.items) {
            list.append(python_value_of(item));
        }
        return std::move(list);
    }
    case InfoValue::Kind::record: {
        py::dict dict;
        for (const auto& field : value.fields) {
            dict[py::str(field.first)] = python_value_of(field.second);
        }
        return std::move(dict);
    }
    case InfoValue::Kind::numbers:
        break;
    }
    if (value.numbers.size() == 1) {
        return py::float_(value.numbers.front());
    }
    py::array_t<double, py::array::f_style> array({value.dims[0], value.dims[1]});
    std::copy(value.numbers.begin(), value.numbers.end(), array.mutable_data());
    return std::move(array);
}
