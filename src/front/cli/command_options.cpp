#include "front/cli/command_options.hpp"

#include <cmath>
#include <cstdlib>
#include <vector>

#include "recon/recon_error.hpp"

namespace {

[[noreturn]] void bad_value(const std::string& flag, const std::string& what)
{
    throw ReconError("homodyne:badOption", flag + ": " + what);
}

// A number, or a fraction such as 5/8.
double number_of(const std::string& flag, const std::string& text)
{
    const std::string::size_type slash = text.find('/');
    if (slash != std::string::npos) {
        return number_of(flag, text.substr(0, slash)) / number_of(flag, text.substr(slash + 1));
    }
    char* end = nullptr;
    const double x = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(x)) {
        bad_value(flag, "'" + text + "' is not a number");
    }
    return x;
}

// Per axis, AXIS=VALUE separated by commas (y=-16:63,z=-8:7; y=5/8):
// a list of three entries, those not named fully sampled.
OptionValue axis_list_of(const std::string& flag, const std::string& text, bool ranges)
{
    OptionValue value;
    value.kind = OptionValue::Kind::list;
    value.list.resize(3);
    std::string::size_type start = 0;
    while (start <= text.size()) {
        const std::string::size_type end = std::min(text.find(',', start), text.size());
        const std::string item = text.substr(start, end - start);
        const std::string::size_type equals = item.find('=');
        const std::string axis = item.substr(0, equals);
        if (equals == std::string::npos || axis.size() != 1 || std::string("xyz").find(axis) == std::string::npos) {
            bad_value(flag, "'" + item + "' must be AXIS=" + (ranges ? "FIRST:LAST" : "FRACTION") +
                                " with AXIS x, y or z");
        }
        const std::string entry = item.substr(equals + 1);
        std::vector<double> numbers;
        const std::string::size_type colon = ranges ? entry.find(':') : std::string::npos;
        if (ranges && colon == std::string::npos) {
            bad_value(flag, "'" + item + "' must be AXIS=FIRST:LAST");
        }
        if (ranges) {
            numbers = {number_of(flag, entry.substr(0, colon)), number_of(flag, entry.substr(colon + 1))};
        } else {
            numbers = {number_of(flag, entry)};
        }
        value.list[std::string("xyz").find(axis)] = numbers;
        start = end + 1;
    }
    return value;
}

OptionValue core_value_of(const OptionRow& row, const std::string& flag, const std::string& text)
{
    switch (row.kind) {
    case OptionKind::choice:
        return OptionValue::of_text(text);
    case OptionKind::boolean:
        if (text != "on" && text != "off" && text != "true" && text != "false") {
            bad_value(flag, "must be on or off");
        }
        return OptionValue::of_boolean(text == "on" || text == "true");
    case OptionKind::ranges:
        return axis_list_of(flag, text, true);
    case OptionKind::fractions:
        return axis_list_of(flag, text, false);
    default:
        return OptionValue::of_number(number_of(flag, text));
    }
}

// The command line's own options.
struct OwnRow {
    const char* flag;
    const char* value;  // nullptr for a switch
    const char* help;
    void (*set)(CommandOptions&, const std::string& value);
};

const OwnRow own_options[] = {
    {"--no-prewhitening", nullptr,
     "ignore the file's noise-only readouts (by default the coils are\n"
     "prewhitened with their covariance, which also gives sigma)",
     [](CommandOptions& o, const std::string&) { set_option(o.settings, "NoiseCovariance", OptionValue{}); }},
    {"--keep-oversampling", nullptr,
     "keep the readout oversampling (default: removed, so the image covers\n"
     "the field of view the header reconstructs)",
     [](CommandOptions& o, const std::string&) { o.keep_oversampling = true; }},
    {"--png", "FILE", "also write a PNG montage of every z plane of every image",
     [](CommandOptions& o, const std::string& v) { o.png = v; }},
    {"--wisdom", "FILE",
     "keep FFTW's measured plans in FILE between runs: read if it exists,\n"
     "written back when it grew (POCS measures its transforms once per\n"
     "image size, about 1.2 s at 256 x 256 x 64)",
     [](CommandOptions& o, const std::string& v) { o.wisdom = v; }},
    {"--quiet", nullptr,
     "no warnings or summary on stderr; errors still shown, and the summary\n"
     "when readouts of the file were averaged or left out",
     [](CommandOptions& o, const std::string&) { o.quiet = true; }},
    {"--help", nullptr, "print this help and exit", [](CommandOptions& o, const std::string&) { o.help = true; }},
};

// Options that only an array in memory can give.
bool on_command_line(const OptionRow& row)
{
    return row.kind != OptionKind::matrix && row.kind != OptionKind::acquisition;
}

const OptionRow* core_row_of(const std::string& flag)
{
    for (const OptionRow& row : option_table()) {
        if (on_command_line(row) && flag_of(row.name) == flag) {
            return &row;
        }
    }
    return nullptr;
}

const OwnRow* own_row_of(const std::string& flag)
{
    for (const OwnRow& row : own_options) {
        if (flag == row.flag) {
            return &row;
        }
    }
    return nullptr;
}

void add_help(std::string& text, const std::string& head, const std::string& help)
{
    text += "  " + head + "\n";
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

}  // namespace

CommandOptions parse_command_line(int argc, const char* const* argv)
{
    CommandOptions options;
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
        const OptionRow* core = core_row_of(flag);
        const OwnRow* own = own_row_of(flag);
        if (core == nullptr && own == nullptr) {
            throw ReconError("homodyne:usage", flag + ": unknown option (see --help)");
        }
        const bool takes_value = core != nullptr || own->value != nullptr;
        std::string value;
        if (!takes_value) {
            if (equals != std::string::npos) {
                throw ReconError("homodyne:usage", flag + ": takes no value");
            }
        } else if (equals != std::string::npos) {
            value = word.substr(equals + 1);
        } else if (a + 1 < argc) {
            value = argv[++a];
        } else {
            throw ReconError("homodyne:usage", flag + ": needs a value (" + (core ? core->values : own->value) + ")");
        }
        if (core != nullptr) {
            set_option(options.settings, core->name, core_value_of(*core, flag, value));
        } else {
            own->set(options, value);
        }
    }
    if (options.help) {
        return options;
    }
    if (files.size() != 2) {
        throw ReconError("homodyne:usage", "expects INPUT OUTPUT (see --help)");
    }
    options.input = files[0];
    options.output = files[1];
    return options;
}

std::string command_help()
{
    std::string text =
        "Usage: homodyne-recon [options] INPUT OUTPUT\n"
        "\n"
        "Reconstructs partial-Fourier k-space. INPUT is ISMRMRD raw data (.h5:\n"
        "its first encoding space; the sampled ranges from the header's encoding\n"
        "limits, checked against the data; the coils prewhitened with the noise\n"
        "readouts) or BART's NAME.cfl with NAME.hdr (x, y, z, then coils with\n"
        "--coils 4, or volumes; the ranges detected from the data unless given).\n"
        "OUTPUT: ISMRMRD images (.h5, one per volume, with the input's XML header)\n"
        "for raw data, NAME.cfl images for .cfl k-space. Nothing is written\n"
        "unless every step succeeds.\n"
        "\n"
        "Reconstruction options (--name VALUE or --name=VALUE; the same options,\n"
        "defaults and checks as homodyne_recon in Octave and homodyne.recon in\n"
        "Python; ranges as AXIS=FIRST:LAST, fractions as AXIS=F, comma-separated):\n";
    for (const OptionRow& row : option_table()) {
        if (on_command_line(row)) {
            add_help(text, flag_of(row.name) + " " + row.values + "   (default " + row.default_text + ")",
                     in_command_words(row.help));
        }
    }
    text += "\nThe command line's own options:\n";
    for (const OwnRow& row : own_options) {
        add_help(text, std::string(row.flag) + (row.value != nullptr ? std::string(" ") + row.value : ""), row.help);
    }
    text +=
        "\n"
        "Warnings go to stderr, then a summary line (both left out with --quiet,\n"
        "except the summary when readouts were averaged or left out: it names\n"
        "them).\n"
        "Exit status: 0 done; 1 a fault of the file or its data (the message names\n"
        "the file); 2 a fault of the command line (the message names the option).\n";
    return text;
}

std::string in_command_words(const std::string& message)
{
    return in_option_words(message, flag_of);
}
