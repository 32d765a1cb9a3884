#include "front/mex/info_struct.hpp"

#include <algorithm>

namespace {

bool all_records(const std::vector<InfoValue>& items)
{
    return !items.empty() && std::all_of(items.begin(), items.end(), [&](const InfoValue& item) {
        return item.kind == InfoValue::Kind::record && item.fields.size() == items.front().fields.size();
    });
}

mxArray* struct_of(const std::vector<InfoValue>& records)
{
    std::vector<const char*> names;
    for (const auto& field : records.front().fields) {
        names.push_back(field.first.c_str());
    }
    mxArray* array = mxCreateStructMatrix(1, records.size(), static_cast<int>(names.size()), names.data());
    for (std::size_t r = 0; r < records.size(); ++r) {
        for (std::size_t f = 0; f < names.size(); ++f) {
            mxSetFieldByNumber(array, r, static_cast<int>(f), host_value_of(records[r].fields[f].second));
        }
    }
    return array;
}

}  // namespace

mxArray* host_value_of(const InfoValue& value)
{
    switch (value.kind) {
    case InfoValue::Kind::text:
        return mxCreateString(value.text.c_str());
    case InfoValue::Kind::flag:
        return mxCreateLogicalScalar(value.flag);
    case InfoValue::Kind::record:
        return struct_of({value});
    case InfoValue::Kind::list: {
        if (all_records(value.items)) {
            return struct_of(value.items);
        }
        mxArray* cell = mxCreateCellMatrix(1, value.items.size());
        for (std::size_t i = 0; i < value.items.size(); ++i) {
            mxSetCell(cell, i, host_value_of(value.items[i]));
        }
        return cell;
    }
    case InfoValue::Kind::numbers:
        break;
    }
    mxArray* array = mxCreateDoubleMatrix(value.dims[0], value.dims[1], mxREAL);
    std::copy(value.numbers.begin(), value.numbers.end(), static_cast<double*>(mxGetData(array)));
    return array;
}
