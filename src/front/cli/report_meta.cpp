#include "front/cli/report_meta.hpp"

#include <cstdio>

namespace {

const InfoValue& field(const InfoValue& record, const std::string& name)
{
    for (const auto& [key, value] : record.fields) {
        if (key == name) {
            return value;
        }
    }
    static const InfoValue none = InfoValue::of_matrix({}, 0);
    return none;
}

std::vector<std::string> texts_of(const InfoValue& value)
{
    switch (value.kind) {
    case InfoValue::Kind::text:
        return {value.text};
    case InfoValue::Kind::flag:
        return {value.flag ? "true" : "false"};
    case InfoValue::Kind::numbers: {
        std::vector<std::string> texts;
        for (const double number : value.numbers) {
            char text[32];
            std::snprintf(text, sizeof text, "%.9g", number);
            texts.emplace_back(text);
        }
        return texts;
    }
    case InfoValue::Kind::list:
    case InfoValue::Kind::record:
        break;
    }
    return {};
}

}  // namespace

ImageMeta report_meta(const InfoValue& info)
{
    ImageMeta meta;
    for (const char* name : {"method", "combination", "noise_source", "noise_sigma"}) {
        meta.emplace_back(name, texts_of(field(info, name)));
    }
    const InfoValue& adaptive = field(info, "adaptive");
    for (const char* name : {"applied_to", "steps", "sigma"}) {
        meta.emplace_back(std::string("adaptive.") + name, texts_of(field(adaptive, name)));
    }
    return meta;
}
