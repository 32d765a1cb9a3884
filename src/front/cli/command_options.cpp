#include "front/cli/command_options.hpp"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "recon/recon_error.hpp"

namespace {

[[noreturn]] void bad_value(const std::string& flag, const std::string& what)
{
    throw ReconError("homodyne:badOption", flag + ": " + what);
}

double number_of(const std::string& flag, const std::string& text)
{
    char* end = nullptr;
    const double x = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(x)) {
        bad_value(flag, "'" + text + "' is not a number");
    }
    return x;
}

// Whole numbers beyond int are clamped so that the core refuses them with
// its own range.
int whole_number_of(const std::string& flag, const std::string& text)
{
    const double x = number_of(flag, text);
    if (x != std::floor(x)) {
        bad_value(flag, "'" + text + "' is not a whole number");
    }
    return static_cast<int>(std::fmax(INT_MIN, std::fmin(INT_MAX, x)));
}

bool switch_of(const std::string& flag, const std::string& text)
{
    if (text != "on" && text != "off") {
        bad_value(flag, "must be on or off");
    }
    return text == "on";
}

struct OptionRow {
    const char* flag;
    const char* value;      // nullptr for a switch
    const char* core_name;  // the name the core's messages use, nullptr if none
    const char* help;
    void (*set)(CommandOptions&, const std::string& value);
};

const OptionRow option_table[] = {
    {"--method", "pocs|homodyne", "Method",
     "pocs (default): iterative, keeps the image phase; homodyne: one pass\n"
     "through the module's weights and phase transfer",
     [](CommandOptions& o, const std::string& v) { o.recon.method = method_named(v); }},
    {"--output", "magnitude|real|complex", "Output",
     "magnitude (default): |x|; real: Re(x e^{-i phi}) along the estimated\n"
     "phase; complex: x with its phase",
     [](CommandOptions& o, const std::string& v) { o.recon.output = output_named(v); }},
    {"--coil-combine", "adaptive|rss|none", "CoilCombine",
     "how the coil images of a volume become one image: adaptive (default)\n"
     "weights them by sensitivities estimated from their calibration\n"
     "images; rss: root sum of squares (no phase); none: one image channel\n"
     "per coil",
     [](CommandOptions& o, const std::string& v) { o.recon.combination = combination_named(v); }},
    {"--noise-adaptive", "on|off", "NoiseAdaptive",
     "on (default): every synthesised k-space sample weighted by\n"
     "max(0, 1 - f sigma^2 / P), P the power around its measured partner\n"
     "(f = 2 after the real form, 1 after the magnitude form), and the\n"
     "image's part at right angles to its phase by its own SNR; sigma from\n"
     "the file's noise readouts, else estimated from the data",
     [](CommandOptions& o, const std::string& v) { o.recon.noise_adaptive = switch_of("--noise-adaptive", v); }},
    {"--no-prewhitening", nullptr, nullptr,
     "ignore the file's noise-only readouts (by default the coils are\n"
     "prewhitened with their covariance, which also gives sigma)",
     [](CommandOptions& o, const std::string&) { o.prewhiten = false; }},
    {"--iterations", "N", "Iterations", "POCS: at most N iterations, 1 to 10000 (default 20)",
     [](CommandOptions& o, const std::string& v) { o.recon.iterations = whole_number_of("--iterations", v); }},
    {"--tolerance", "T", "Tolerance",
     "POCS: stop once the relative change of an iteration falls below T,\n"
     "0 <= T < 1 (default 2e-4; 0 runs all iterations)",
     [](CommandOptions& o, const std::string& v) { o.recon.tolerance = number_of("--tolerance", v); }},
    {"--constraint", "auto|real|magnitude", "Constraint",
     "POCS image constraint (default auto: with one partial axis, short\n"
     "trials of both, the real form kept where it fits the measured data\n"
     "far better; with two or three, magnitude)",
     [](CommandOptions& o, const std::string& v) { o.recon.constraint = constraint_named(v); }},
    {"--window", "hann|tukey|box", "Window", "POCS: window of the phase estimate (default hann)",
     [](CommandOptions& o, const std::string& v) { o.recon.window = window_named(v); }},
    {"--transition-band", "N", "TransitionBand",
     "POCS: measured samples within N of the block's edge blended with\n"
     "the estimate, 0 to 64 (default 0)",
     [](CommandOptions& o, const std::string& v) { o.recon.transition_band = whole_number_of("--transition-band", v); }},
    {"--threads", "N", "Threads",
     "coil images reconstructed at once, 0 to 1024 (default 0: one per\n"
     "core); the images do not depend on it",
     [](CommandOptions& o, const std::string& v) { o.recon.threads = whole_number_of("--threads", v); }},
    {"--keep-oversampling", nullptr, nullptr,
     "keep the readout oversampling (default: removed, so the image covers\n"
     "the field of view the header reconstructs)",
     [](CommandOptions& o, const std::string&) { o.keep_oversampling = true; }},
    {"--png", "FILE", nullptr, "also write a PNG montage of every z plane of every image",
     [](CommandOptions& o, const std::string& v) { o.png = v; }},
    {"--wisdom", "FILE", nullptr,
     "keep FFTW's measured plans in FILE between runs: read if it exists,\n"
     "written back when it grew (POCS measures its transforms once per\n"
     "image size, about 1.2 s at 256 x 256 x 64)",
     [](CommandOptions& o, const std::string& v) { o.wisdom = v; }},
    {"--quiet", nullptr, nullptr, "no progress, warnings or summary on stderr; errors still shown",
     [](CommandOptions& o, const std::string&) { o.quiet = true; }},
    {"--help", nullptr, nullptr, "print this help and exit",
     [](CommandOptions& o, const std::string&) { o.help = true; }},
};

const OptionRow* row_of(const std::string& flag)
{
    for (const OptionRow& row : option_table) {
        if (flag == row.flag) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

CommandOptions default_command_options()
{
    CommandOptions options;
    options.recon.output = ReconOutput::magnitude;
    return options;
}

CommandOptions parse_command_line(int argc, const char* const* argv)
{
    CommandOptions options = default_command_options();
    std::vector<std::string> files;
    bool options_end = false;
    for (int a = 1; a < argc; ++a) {
        const std::string word = argv[a];
        if (options_end || word.size() < 2 || word[0] != '-') {
            files.push_back(word);
            continue;
        }
        if (word == "--") {
            options_end = true;
            continue;
        }
        const std::string::size_type equals = word.find('=');
        const std::string flag = word.substr(0, equals);
        const OptionRow* row = row_of(flag);
        if (row == nullptr) {
            throw ReconError("homodyne:usage", flag + ": unknown option (see --help)");
        }
        std::string value;
        if (row->value == nullptr) {
            if (equals != std::string::npos) {
                throw ReconError("homodyne:usage", flag + ": takes no value");
            }
        } else if (equals != std::string::npos) {
            value = word.substr(equals + 1);
        } else if (a + 1 < argc) {
            value = argv[++a];
        } else {
            throw ReconError("homodyne:usage", flag + ": needs a value (" + row->value + ")");
        }
        row->set(options, value);
    }
    if (options.help) {
        return options;
    }
    if (files.size() != 2) {
        throw ReconError("homodyne:usage", "expects INPUT.h5 OUTPUT.h5 (see --help)");
    }
    options.input = files[0];
    options.output = files[1];
    validate_options(options.recon, ReconShape{});
    return options;
}

std::string command_help()
{
    std::string text =
        "Usage: homodyne-recon [options] INPUT.h5 OUTPUT.h5\n"
        "\n"
        "Reconstructs the partial-Fourier ISMRMRD raw data INPUT.h5 (its first\n"
        "encoding space; the sampled ranges from the header's encoding limits and\n"
        "the readouts' centre samples) and writes OUTPUT.h5: ISMRMRD images, one\n"
        "per volume (slice, contrast, phase, repetition, set, average), with the\n"
        "input's XML header. Nothing is written unless every step succeeds.\n"
        "\n"
        "Options (--name VALUE or --name=VALUE):\n";
    for (const OptionRow& row : option_table) {
        std::string head = std::string("  ") + row.flag + (row.value != nullptr ? std::string(" ") + row.value : "");
        text += head + "\n";
        std::string help = row.help;
        std::string::size_type start = 0;
        while (start <= help.size()) {
            const std::string::size_type end = help.find('\n', start);
            text += "      " + help.substr(start, end - start) + "\n";
            if (end == std::string::npos) {
                break;
            }
            start = end + 1;
        }
    }
    text +=
        "\n"
        "Progress (volume i of n) goes to stderr for files of several volumes.\n"
        "Exit status: 0 done; 1 a fault of the file or its data (the message names\n"
        "the file); 2 a fault of the command line (the message names the option).\n";
    return text;
}

std::string in_command_words(const std::string& message)
{
    std::string text = message;
    for (const OptionRow& row : option_table) {
        if (row.core_name == nullptr) {
            continue;
        }
        const std::string quoted = std::string("'") + row.core_name + "'";
        for (std::string::size_type at = text.find(quoted); at != std::string::npos; at = text.find(quoted, at)) {
            text.replace(at, quoted.size(), row.flag);
        }
    }
    return text;
}
