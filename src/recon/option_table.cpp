#include "recon/option_table.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "recon/recon_error.hpp"

namespace {

[[noreturn]] void bad_option(const std::string& message) { throw ReconError("homodyne:badOption", message); }

std::string quoted(const char* name) { return std::string("'") + name + "'"; }

// The row of an option spelt in any of the accepted ways: case, '_' and '-'
// do not count.
std::string folded(const std::string& name)
{
    std::string key;
    for (const unsigned char c : name) {
        if (c != '_' && c != '-') {
            key += static_cast<char>(std::tolower(c));
        }
    }
    return key;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// Levenshtein distance, for the closest name to a misspelt one.
std::size_t edit_distance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The choices of an option with text values, in the order of its enum.
struct Choices {
    const char* option;
    std::vector<const char*> names;

    int of(const OptionValue& value) const
    {
        if (value.kind == OptionValue::Kind::text) {
            for (std::size_t i = 0; i < names.size(); ++i) {
                if (lower(value.text) == names[i]) {
                    return static_cast<int>(i);
                }
            }
        }
        std::string list;
        for (std::size_t i = 0; i < names.size(); ++i) {
            list += (i == 0 ? "'" : i + 1 == names.size() ? " or '" : ", '") + std::string(names[i]) + "'";
        }
        bad_option(quoted(option) + " must be " + list + ".");
    }
};

// In the order of their enums.
const Choices method_choices{"Method", {"homodyne", "pocs"}};
const Choices output_choices{"Output", {"real", "magnitude", "complex"}};
const Choices constraint_choices{"Constraint", {"auto", "real", "magnitude"}};
const Choices window_choices{"Window", {"hann", "tukey", "box"}};
const Choices combination_choices{"CoilCombine", {"adaptive", "rss", "none"}};

double number_of(const OptionValue& value, const char* option, const std::string& domain)
{
    if (value.kind == OptionValue::Kind::number && std::isfinite(value.number)) {
        return value.number;
    }
    if (value.kind == OptionValue::Kind::boolean) {
        return value.boolean ? 1.0 : 0.0;
    }
    bad_option(quoted(option) + " must be " + domain + ".");
}

int whole_number_of(const OptionValue& value, const char* option, int lowest, int highest, const std::string& domain)
{
    const double x = number_of(value, option, domain);
    if (x != std::floor(x) || x < lowest || x > highest) {
        bad_option(quoted(option) + " must be " + domain + ".");
    }
    return static_cast<int>(x);
}

// A numeric option of ReconOptions: a whole number (or any number) stored,
// its domain checked by the core's one check of values.
template <typename T>
void set_numeric(ReconSettings& settings, T ReconOptions::*field, const OptionValue& value, const char* option,
                 bool whole)
{
    const double x = number_of(value, option, whole ? "a whole number" : "a number");
    if (whole && x != std::floor(x)) {
        bad_option(quoted(option) + " must be a whole number.");
    }
    ReconOptions checked = settings.options;
    checked.*field = static_cast<T>(std::fmax(-1e9, std::fmin(1e9, x)));
    validate_values(checked);
    settings.options = checked;
}

bool flag_of(const OptionValue& value, const char* option)
{
    const double x = number_of(value, option, "true or false");
    if (x != 0.0 && x != 1.0) {
        bad_option(quoted(option) + " must be true or false.");
    }
    return x != 0.0;
}

const char axis_names[] = "xyz";

// As Octave prints a number: NaN, Inf, -Inf.
std::string number_text(double x)
{
    if (std::isnan(x)) {
        return "NaN";
    }
    if (std::isinf(x)) {
        return x > 0 ? "Inf" : "-Inf";
    }
    char text[32];
    std::snprintf(text, sizeof text, "%g", x);
    return text;
}

// 'Ranges': up to three entries, each empty or two whole k coordinates.
SampledRanges ranges_of(const OptionValue& value)
{
    if (value.kind != OptionValue::Kind::list || value.list.size() > 3) {
        bad_option("'Ranges' must be a list {KX, KY, KZ} of [] or [first last] in whole k coordinates.");
    }
    SampledRanges ranges;
    for (std::size_t axis = 0; axis < value.list.size(); ++axis) {
        ranges[axis] = range_entry(value.list[axis], std::string("'Ranges' ") + axis_names[axis] + " range");
    }
    return ranges;
}

// 'PartialFourier': up to three entries, each empty or a fraction.
std::array<std::optional<double>, 3> fractions_of(const OptionValue& value)
{
    if (value.kind != OptionValue::Kind::list || value.list.size() > 3) {
        bad_option("'PartialFourier' must be a list {FX, FY, FZ} of [] or fractions such as 5/8.");
    }
    std::array<std::optional<double>, 3> fractions;
    for (std::size_t axis = 0; axis < value.list.size(); ++axis) {
        const std::optional<std::vector<double>>& f = value.list[axis];
        if (!f) {
            continue;
        }
        const bool fraction = f->size() == 1 && std::isfinite((*f)[0]) && std::fabs((*f)[0]) >= 0.5 &&
                              std::fabs((*f)[0]) <= 1.0;
        if (!fraction) {
            bad_option(std::string("'PartialFourier' ") + axis_names[axis] +
                       " entry must be [] or a fraction from 0.5 to 1 (negative: the positive end is missing), not " +
                       (f->size() == 1 ? number_text((*f)[0]) : std::to_string(f->size()) + " numbers") + ".");
        }
        fractions[axis] = (*f)[0];
    }
    return fractions;
}

// Where the ranges come from: 'Ranges' or 'PartialFourier', not both (either
// wins over an acquisition's ranges).
void one_range_source(const ReconSettings& settings, const char* option)
{
    const char* earlier = settings.ranges ? "Ranges" : settings.partial_fourier ? "PartialFourier" : nullptr;
    if (earlier != nullptr && std::string(earlier) != option) {
        bad_option(std::string("give the sampled ranges once: ") + quoted(earlier) + " and " + quoted(option) +
                   " both given.");
    }
}

void set_noise_reference(ReconSettings& settings, const OptionValue& value)
{
    settings.noise_reference_given = true;
    settings.noise_reference.clear();
    settings.noise_reference_dims.clear();
    if (value.kind == OptionValue::Kind::empty) {
        return;
    }
    if (value.kind == OptionValue::Kind::number) {
        settings.noise_reference.assign(1, Complex(static_cast<float>(value.number), 0.0f));
        settings.noise_reference_dims = {1, 1};
    } else if (value.kind == OptionValue::Kind::array) {
        settings.noise_reference = value.values;
        settings.noise_reference_dims = value.dims;
    } else {
        throw ReconError("homodyne:badInput",
                         "'NoiseCovariance' must be a matrix (coils x coils) or a noise scan of numbers.");
    }
    for (const Complex& v : settings.noise_reference) {
        if (!std::isfinite(v.real()) || !std::isfinite(v.imag())) {
            throw ReconError("homodyne:badInput", "'NoiseCovariance' must hold finite values.");
        }
    }
}

using Setter = void (*)(ReconSettings&, const OptionValue&);

struct Row {
    OptionRow row;
    Setter set;
};

// The options, in the order help lists them. Defaults live in ReconOptions
// and ReconSettings; `default_text` says them for help.
const std::vector<Row>& rows()
{
    static const std::vector<Row> table = {
        {{"Method", OptionKind::choice, "pocs|homodyne", "pocs",
          "pocs: iterative projections onto the phase estimated from the\n"
          "symmetric centre and onto the measured samples; keeps the image phase\n"
          "and gave 2-6x lower error than one pass on the demo phantom.\n"
          "homodyne: one pass through the module's weights and phase transfer."},
         [](ReconSettings& s, const OptionValue& v) { s.options.method = ReconMethod(method_choices.of(v)); }},
        {{"Output", OptionKind::choice, "real|magnitude|complex", "real",
          "real: the image along its estimated phase, Re(x e^{-i phi}), which may\n"
          "dip below 0 where the estimate is off; magnitude: |x|; complex: x\n"
          "with its phase"},
         [](ReconSettings& s, const OptionValue& v) { s.options.output = ReconOutput(output_choices.of(v)); }},
        {{"Ranges", OptionKind::ranges, "{KX, KY, KZ}", "detected from the data",
          "the sampled block per axis, [] (fully sampled) or [first last] in\n"
          "whole k coordinates (k = 0 at index floor(n/2), counted from 0);\n"
          "checked against the data"},
         [](ReconSettings& s, const OptionValue& v) {
             one_range_source(s, "Ranges");
             s.ranges.reset();
             if (v.kind != OptionValue::Kind::empty) {
                 s.ranges = ranges_of(v);
             }
         }},
        {{"PartialFourier", OptionKind::fractions, "{FX, FY, FZ}", "detected from the data",
          "the acquired fraction per axis as protocols state it, [] or 0.5 to 1\n"
          "(5/8, 0.75; negative: the positive end is missing); an axis of n\n"
          "samples keeps n - floor((1 - |f|) n) planes"},
         [](ReconSettings& s, const OptionValue& v) {
             one_range_source(s, "PartialFourier");
             s.partial_fourier.reset();
             if (v.kind != OptionValue::Kind::empty) {
                 s.partial_fourier = fractions_of(v);
             }
         }},
        {{"Acquisition", OptionKind::acquisition, "ACQ", "none",
          "what a raw-file reader knows of the scan: its ranges are used unless\n"
          "'Ranges' or 'PartialFourier' is given; unless the call names 'Coils',\n"
          "its coils (dimension 4) are combined, and unless it names 'Coils' or\n"
          "'NoiseCovariance', its noise readouts prewhiten them"},
         [](ReconSettings& s, const OptionValue& v) {
             s.acquisition.reset();
             if (v.kind == OptionValue::Kind::acquisition && v.acquisition) {
                 s.acquisition = v.acquisition;
             } else if (v.kind != OptionValue::Kind::empty) {
                 bad_option("'Acquisition' must be the acquisition of a raw-file reader.");
             }
         }},
        {{"Coils", OptionKind::dimension, "DIM", "none",
          "the dimension holding the receive coils, counted from 1 (3 or more);\n"
          "the coils are reconstructed one by one and combined. 'Coils', 3\n"
          "makes the data 2-D. Without it further dimensions are volumes"},
         [](ReconSettings& s, const OptionValue& v) {
             s.coils.reset();
             if (v.kind != OptionValue::Kind::empty) {
                 s.coils = whole_number_of(v, "Coils", 1, 64,
                                           "the dimension that holds the receive coils, a whole number from 3 "
                                           "to the number of dimensions");
             }
         }},
        {{"Dims", OptionKind::whole_number, "2|3", "3 (2 with 'Coils', 3)",
          "spatial dimensions: with 2, dimension 3 onward are coils or volumes,\n"
          "never a transformed axis"},
         [](ReconSettings& s, const OptionValue& v) {
             s.dims.reset();
             if (v.kind != OptionValue::Kind::empty) {
                 s.dims = whole_number_of(v, "Dims", 2, 3, "2 or 3 (the number of spatial dimensions)");
             }
         }},
        {{"CoilCombine", OptionKind::choice, "adaptive|rss|none", "adaptive",
          "adaptive: coils weighted by sensitivities estimated from their\n"
          "calibration images (the phase of the strongest coil kept); rss: root\n"
          "sum of squares (no phase); none: every coil image a result"},
         [](ReconSettings& s, const OptionValue& v) {
             s.options.combination = CoilCombination(combination_choices.of(v));
         }},
        {{"NoiseCovariance", OptionKind::matrix, "C", "none (from the acquisition's noise readouts, if any)",
          "the coils' noise covariance (coils x coils) or a noise-only scan with\n"
          "the coils along the coil dimension; the coils are prewhitened with it\n"
          "and the noise level comes from it. Without coils a scalar is the noise\n"
          "power per sample. Named as [], no prewhitening at all"},
         set_noise_reference},
        {{"NoiseAdaptive", OptionKind::boolean, "true|false", "true",
          "after the partial-Fourier step, every k-space sample weighted by its\n"
          "SNR (measured ones by their own, synthesised ones by their measured\n"
          "partners'), and for magnitude output the image's part at right\n"
          "angles to its phase by its own; complex output is left as measured.\n"
          "Fully sampled data get the same (phase from the windowed centre, a\n"
          "quarter of every axis), so partial data never come out cleaner than\n"
          "full data through the same call (bench: 5 % or more above them;\n"
          "single coil SNR 20, median 0.91 of the fully sampled noisy image).\n"
          "On by default as it lowers the error of every noisy magnitude and\n"
          "real image; off for fits that model Rician noise or rely on signal\n"
          "near the noise (diffusion, relaxometry): the weights make the noise\n"
          "non-Rician and correlated and shrink signal below it. The noise\n"
          "level from the covariance, else estimated from the data"},
         [](ReconSettings& s, const OptionValue& v) { s.options.noise_adaptive = flag_of(v, "NoiseAdaptive"); }},
        {{"Iterations", OptionKind::whole_number, "N", "20",
          "POCS: at most N iterations, 1 to 10000 (the error still fell between\n"
          "10 and 20 on the phantoms and was flat or rising beyond 40)"},
         [](ReconSettings& s, const OptionValue& v) { set_numeric(s, &ReconOptions::iterations, v, "Iterations", true); }},
        {{"Tolerance", OptionKind::number, "T", "2e-4",
          "POCS: a block of lines (or planes) stops once the relative change\n"
          "of an iteration falls below T, relative to the block's norm or, for\n"
          "a block weaker than its share of the image, to that share;\n"
          "0 <= T < 1; 0 runs every iteration"},
         [](ReconSettings& s, const OptionValue& v) { set_numeric(s, &ReconOptions::tolerance, v, "Tolerance", false); }},
        {{"Threads", OptionKind::whole_number, "N", "0",
          "coil images reconstructed at once, 0 to 1024 (0: one per core); the\n"
          "result does not depend on it"},
         [](ReconSettings& s, const OptionValue& v) { set_numeric(s, &ReconOptions::threads, v, "Threads", true); }},
        {{"Constraint", OptionKind::choice, "auto|real|magnitude", "auto",
          "POCS image constraint: real keeps Re(x e^{-i phi}) e^{i phi} (images\n"
          "that ring across zero), magnitude keeps |x| e^{i phi}; auto: with one\n"
          "partial axis short trials of both, the real form kept where it fits\n"
          "the measured data far better; with two or three, magnitude"},
         [](ReconSettings& s, const OptionValue& v) {
             s.options.constraint = PhaseConstraint(constraint_choices.of(v));
         }},
        {{"Window", OptionKind::choice, "hann|tukey|box", "hann",
          "POCS: the window over the symmetric centre from which the phase is\n"
          "estimated"},
         [](ReconSettings& s, const OptionValue& v) { s.options.window = CalibrationWindow(window_choices.of(v)); }},
        {{"TransitionBand", OptionKind::whole_number, "N", "0",
          "POCS: measured samples within N of the block's edge blended with the\n"
          "estimate (rising as sin^2), 0 to 64"},
         [](ReconSettings& s, const OptionValue& v) {
             set_numeric(s, &ReconOptions::transition_band, v, "TransitionBand", true);
         }},
    };
    return table;
}

const Row* row_named(const std::string& name)
{
    const std::string key = folded(name);
    for (const Row& row : rows()) {
        if (folded(row.row.name) == key) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

std::optional<KRange> range_entry(const std::optional<std::vector<double>>& numbers, const std::string& label)
{
    if (!numbers) {
        return std::nullopt;
    }
    const std::vector<double>& r = *numbers;
    if (r.size() != 2) {
        throw ReconError("homodyne:badRange", label + " must be [] or [first last] in k coordinates, not " +
                                                  std::to_string(r.size()) + (r.size() == 1 ? " number." : " numbers."));
    }
    const double first = r[0], last = r[1];
    if (!std::isfinite(first) || !std::isfinite(last) || first != std::floor(first) || last != std::floor(last) ||
        std::fabs(first) > 1e12 || std::fabs(last) > 1e12) {
        throw ReconError("homodyne:badRange", label + " [" + number_text(first) + " " + number_text(last) +
                                                  "] must hold two finite whole k coordinates.");
    }
    return KRange{static_cast<Index>(first), static_cast<Index>(last)};
}

OptionValue OptionValue::of_text(std::string text)
{
    OptionValue value;
    value.kind = Kind::text;
    value.text = std::move(text);
    return value;
}

OptionValue OptionValue::of_number(double number)
{
    OptionValue value;
    value.kind = Kind::number;
    value.number = number;
    return value;
}

OptionValue OptionValue::of_boolean(bool flag)
{
    OptionValue value;
    value.kind = Kind::boolean;
    value.boolean = flag;
    return value;
}

const std::vector<OptionRow>& option_table()
{
    static const std::vector<OptionRow> table = [] {
        std::vector<OptionRow> list;
        for (const Row& row : rows()) {
            list.push_back(row.row);
        }
        return list;
    }();
    return table;
}

std::string snake_case(const char* name)
{
    std::string text;
    for (const char* c = name; *c != '\0'; ++c) {
        if (std::isupper(static_cast<unsigned char>(*c)) && c != name) {
            text += '_';
        }
        text += static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    }
    return text;
}

std::string flag_of(const char* name)
{
    std::string flag = "--" + snake_case(name);
    std::replace(flag.begin(), flag.end(), '_', '-');
    return flag;
}

const OptionRow* find_option(const std::string& name)
{
    const Row* row = row_named(name);
    return row != nullptr ? &row->row : nullptr;
}

void set_option(ReconSettings& settings, const std::string& name, const OptionValue& value)
{
    const Row* row = row_named(name);
    if (row == nullptr) {
        const Row* closest = nullptr;
        std::size_t best = 0;
        for (const Row& candidate : rows()) {
            const std::size_t d = edit_distance(folded(name), folded(candidate.row.name));
            if (closest == nullptr || d < best) {
                closest = &candidate;
                best = d;
            }
        }
        std::string message = "unknown option " + quoted(name.c_str());
        const bool close = best <= std::max<std::size_t>(2, folded(name).size() / 3);
        message += close ? "; did you mean " + quoted(closest->row.name) + "? The options are" : "; the options are";
        for (const Row& r : rows()) {
            message += std::string(&r == &rows().front() ? " " : ", ") + r.row.name;
        }
        bad_option(message + ".");
    }
    row->set(settings, value);
}

std::string in_option_words(const std::string& message, std::string (*spelling)(const char*))
{
    std::string text = message;
    for (const Row& row : rows()) {
        const std::string from = quoted(row.row.name), to = spelling(row.row.name);
        for (std::string::size_type at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
            text.replace(at, from.size(), to);
        }
    }
    return text;
}
