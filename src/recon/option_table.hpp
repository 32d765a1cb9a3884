#pragma once
// The one table of the reconstruction's options. Every front end sets options
// by name through set_option and shows the table's help; none keeps a list
// of its own. Names are spelt as in Octave ('PartialFourier'); the same name
// in any case, in snake_case (partial_fourier) or as a flag
// (--partial-fourier) finds the same row. A value is checked against its
// option when it is set (homodyne:badOption naming the option); what depends
// on the data (ranges against the axes, coils against the dimensions) is
// checked once, by prepare_call.

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recon/recon_options.hpp"

// The raw-data side of a call: what a reader of a raw file knows of the
// acquisition (the sampled ranges from the header, the noise-only readouts).
struct Acquisition {
    SampledRanges ranges;
    // Noise-only readouts, samples x coils (samples fastest); empty if none.
    std::vector<Complex> noise;
    Index noise_samples = 0;
    Index noise_coils = 0;
    // The noise variance of the k-space is that of the readouts times this.
    double noise_variance_scale = 1.0;
};

// A value as a front end hands it over, in the host's own terms.
struct OptionValue {
    enum class Kind { empty, text, number, boolean, list, array, acquisition };
    Kind kind = Kind::empty;
    std::string text;
    double number = 0.0;
    bool boolean = false;
    // A list of entries, each empty (nullopt) or a few numbers: {[], [-16 63]}, {[], 5/8}.
    std::vector<std::optional<std::vector<double>>> list;
    // A numeric array, column-major, with its sizes (noise covariance or scan).
    std::vector<Complex> values;
    std::vector<Index> dims;
    std::shared_ptr<const Acquisition> acquisition;

    static OptionValue of_text(std::string text);
    static OptionValue of_number(double number);
    static OptionValue of_boolean(bool value);
};

// What kind of value an option takes, for front ends whose values are text
// (the command line) and for help.
enum class OptionKind { choice, whole_number, number, boolean, ranges, fractions, dimension, matrix, acquisition };

struct OptionRow {
    const char* name;          // 'PartialFourier'
    OptionKind kind;
    const char* values;        // "pocs|homodyne", "N", "{KX, KY, KZ}", ...
    const char* default_text;  // "pocs", "20", "detected from the data", ...
    const char* help;          // one paragraph, lines broken with '\n'
};
const std::vector<OptionRow>& option_table();

std::string snake_case(const char* name);  // "PartialFourier" -> "partial_fourier"
std::string flag_of(const char* name);     // "PartialFourier" -> "--partial-fourier"

// Everything a caller says about one reconstruction. Defaults are the table's.
struct ReconSettings {
    ReconOptions options;  // method, output, POCS, coils combination, noise
    // Where the sampled ranges come from: at most one of these; none: detected.
    std::optional<SampledRanges> ranges;                                 // 'Ranges'
    std::optional<std::array<std::optional<double>, 3>> partial_fourier;  // 'PartialFourier'
    std::shared_ptr<const Acquisition> acquisition;                      // 'Acquisition'
    std::optional<int> coils;  // 'Coils': the dimension holding the coils, counted from 1
    std::optional<int> dims;   // 'Dims': 2 or 3 spatial dimensions
    // 'NoiseCovariance' as given (a matrix or a noise scan), named even when
    // empty: an empty one switches off the acquisition's noise readouts.
    bool noise_reference_given = false;
    std::vector<Complex> noise_reference;
    std::vector<Index> noise_reference_dims;
};

// Sets the option `name` (any spelling above). Throws homodyne:badOption for
// an unknown name (naming the closest option) or a value out of the option's
// domain, homodyne:badOption for a second source of ranges.
void set_option(ReconSettings& settings, const std::string& name, const OptionValue& value);

// A sampled range from [] (nullopt) or two numbers, which must be finite
// whole k coordinates; homodyne:badRange naming `label` otherwise.
std::optional<KRange> range_entry(const std::optional<std::vector<double>>& numbers, const std::string& label);

// The row of `name` in any spelling, or null.
const OptionRow* find_option(const std::string& name);

// A message of the core in a front end's words: every option's quoted name
// ('Iterations') replaced by `spelling` of it (flag_of gives --iterations).
std::string in_option_words(const std::string& message, std::string (*spelling)(const char*));
