#include "recon/info_value.hpp"

#include <cmath>

InfoValue InfoValue::of_text(std::string text)
{
    InfoValue value;
    value.kind = Kind::text;
    value.text = std::move(text);
    return value;
}

InfoValue InfoValue::of_number(double number) { return of_matrix({number}, 1); }

InfoValue InfoValue::of_flag(bool flag)
{
    InfoValue value;
    value.kind = Kind::flag;
    value.flag = flag;
    return value;
}

InfoValue InfoValue::of_matrix(std::vector<double> numbers, Index rows)
{
    InfoValue value;
    const Index count = static_cast<Index>(numbers.size());
    value.dims = count == 0 ? std::vector<Index>{0, 0} : std::vector<Index>{rows, count / rows};
    value.numbers = std::move(numbers);
    return value;
}

InfoValue InfoValue::of_list(std::vector<InfoValue> items)
{
    InfoValue value;
    value.kind = Kind::list;
    value.items = std::move(items);
    return value;
}

InfoValue InfoValue::of_record(std::vector<std::pair<std::string, InfoValue>> fields)
{
    InfoValue value;
    value.kind = Kind::record;
    value.fields = std::move(fields);
    return value;
}

namespace {

InfoValue range_value(const std::optional<KRange>& range)
{
    return range ? InfoValue::of_matrix({double(range->first), double(range->last)}, 1) : InfoValue::of_matrix({}, 0);
}

InfoValue detection_value(const RangeDetection& detection)
{
    std::vector<InfoValue> axes;
    for (int a = 0; a < 3; ++a) {
        const AxisDetection& d = detection[a];
        axes.push_back(InfoValue::of_record({{"axis", InfoValue::of_text(std::string(1, "xyz"[a]))},
                                             {"method", InfoValue::of_text(name_of(d.method))},
                                             {"range", range_value(d.range)},
                                             {"ratio", InfoValue::of_number(d.ratio)},
                                             {"one_sided", InfoValue::of_flag(d.one_sided)}}));
    }
    return InfoValue::of_list(std::move(axes));
}

// What the noise-adaptive step did: on which images, which of its weights
// acted (steps: "measured samples", "synthesised samples" where some image
// had samples to synthesise, "quadrature component" for magnitude output,
// or "none"), with which noise sigma, the mean weight of the measured and of
// the synthesised samples, the fraction of these weighted 0 and the mean
// weight of the quadrature component.
InfoValue adaptive_value(const ReconReport& report, double scale)
{
    std::vector<double> measured_weight, mean_weight, removed, quadrature, sigma;
    bool synthesis_weighted = false, quadrature_weighted = false;
    for (const SynthesisReport& r : report.synthesis) {
        measured_weight.push_back(r.measured_weight);
        mean_weight.push_back(r.mean_weight);
        removed.push_back(r.synthesised > 0 ? double(r.removed) / double(r.synthesised) : 0.0);
        quadrature.push_back(r.quadrature_weight);
        synthesis_weighted = synthesis_weighted || r.synthesised > 0;
        quadrature_weighted = quadrature_weighted || r.quadrature_weighted;
    }
    std::string steps = report.synthesis.empty() ? "none" : "measured samples";
    if (synthesis_weighted) {
        steps += ", synthesised samples";
    }
    if (quadrature_weighted) {
        steps += ", quadrature component";
    }
    for (const float s : report.image_sigma) {
        sigma.push_back(s * scale);
    }
    const char* applied_to = report.synthesis.empty()                          ? "none"
                             : report.combination == CoilCombination::adaptive ? "combined image"
                                                                             : "each coil image";
    return InfoValue::of_record({{"applied_to", InfoValue::of_text(applied_to)},
                                 {"steps", InfoValue::of_text(steps)},
                                 {"sigma", InfoValue::of_matrix(sigma, 1)},
                                 {"measured_weight", InfoValue::of_matrix(measured_weight, 1)},
                                 {"mean_weight", InfoValue::of_matrix(mean_weight, 1)},
                                 {"removed", InfoValue::of_matrix(removed, 1)},
                                 {"quadrature_weight", InfoValue::of_matrix(quadrature, 1)}});
}

}  // namespace

InfoValue describe(const ReconInfo& info, const ReconCall& call)
{
    const ReconReport& report = info.report;
    const double scale = std::ldexp(1.0, info.scale_exponent);
    const bool pocs = info.method == ReconMethod::pocs;
    std::vector<InfoValue> ranges, constraints, warnings;
    for (int a = 0; a < 3; ++a) {
        ranges.push_back(range_value(info.ranges[a]));
    }
    std::vector<double> iterations, change, residual, echo, sigma;
    for (const VolumeReport& r : report.images) {
        iterations.insert(iterations.end(), r.iterations.begin(), r.iterations.end());
        change.push_back(r.change);
        residual.push_back(r.residual);
        echo.insert(echo.end(), {double(r.echo[0]), double(r.echo[1]), double(r.echo[2])});
        constraints.push_back(InfoValue::of_text(pocs ? name_of(r.constraint) : ""));
    }
    for (const float s : report.coil_sigma) {
        sigma.push_back(s * scale);
    }
    for (const ReconWarning& w : call.warnings) {
        warnings.push_back(InfoValue::of_record({{"identifier", InfoValue::of_text(w.id)},
                                                 {"message", InfoValue::of_text(w.message)}}));
    }
    return InfoValue::of_record({
        {"ranges", InfoValue::of_list(std::move(ranges))},
        {"detection", detection_value(info.detection)},
        {"method", InfoValue::of_text(pocs ? "pocs" : "homodyne")},
        {"constraint", InfoValue::of_list(std::move(constraints))},
        {"iterations", InfoValue::of_matrix(iterations, 3)},
        {"change", InfoValue::of_matrix(change, 1)},
        {"residual", InfoValue::of_matrix(residual, 1)},
        {"echo_offset", InfoValue::of_matrix(echo, 3)},
        {"threads", InfoValue::of_number(report.threads)},
        {"combination", InfoValue::of_text(name_of(report.combination))},
        {"noise_source", InfoValue::of_text(name_of(report.noise_source))},
        {"noise_sigma", InfoValue::of_matrix(sigma, sigma.empty() ? 1 : call.shape.coils)},
        {"adaptive", adaptive_value(report, scale)},
        {"warnings", InfoValue::of_list(std::move(warnings))},
        {"seconds", InfoValue::of_record({{"total", InfoValue::of_number(info.seconds)}})},
    });
}
