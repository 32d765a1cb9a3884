#include "io/cfl.hpp"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "io/raw_file_check.hpp"
#include "recon/recon_error.hpp"

namespace {

[[noreturn]] void bad_file(const std::string& path, const std::string& what)
{
    throw ReconError("homodyne:badFile", file_fault(path, what));
}

// The sizes line: the one after "# Dimensions", or else the first line that
// is not a comment.
std::vector<Index> header_sizes(const std::string& path)
{
    std::ifstream header(path);
    if (!header) {
        bad_file(path, std::filesystem::exists(path) ? "cannot be read" : "no such file");
    }
    std::string line, sizes_line;
    bool found = false, after_heading = false;
    while (!found && std::getline(header, line)) {
        if (line.rfind("#", 0) == 0) {
            after_heading = line.find("Dimensions") != std::string::npos;
        } else if (line.find_first_not_of(" \t\r") != std::string::npos && (after_heading || sizes_line.empty())) {
            sizes_line = line;
            found = after_heading;
        }
    }
    std::istringstream in(sizes_line);
    std::vector<Index> dims;
    std::string word;
    Index count = 1;
    while (in >> word) {
        std::size_t used = 0;
        long long n = 0;
        try {
            n = std::stoll(word, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used != word.size() || n < 1) {
            bad_file(path, "the size '" + word + "' is not a positive whole number");
        }
        if (n > (Index(1) << 40) / count) {
            bad_file(path, "the sizes declare more than 2^40 samples");
        }
        count *= n;
        dims.push_back(static_cast<Index>(n));
    }
    if (dims.empty()) {
        bad_file(path, "no sizes after \"# Dimensions\"");
    }
    return dims;
}

}  // namespace

CflArray read_cfl(const std::string& base)
{
    const std::string header = base + ".hdr", data = base + ".cfl";
    CflArray array;
    array.dims = header_sizes(header);
    Index count = 1;
    for (const Index n : array.dims) {
        count *= n;
    }
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(data, error);
    if (error) {
        bad_file(data, std::filesystem::exists(data) ? "cannot be read" : "no such file");
    }
    const std::uintmax_t expected = static_cast<std::uintmax_t>(count) * sizeof(Complex);
    if (bytes != expected) {
        bad_file(data, "holds " + std::to_string(bytes) + " bytes, but " + header + " declares " +
                           std::to_string(count) + " samples (" + std::to_string(expected) + " bytes)");
    }
    array.values.resize(static_cast<std::size_t>(count));
    std::ifstream in(data, std::ios::binary);
    if (!in.read(reinterpret_cast<char*>(array.values.data()), static_cast<std::streamsize>(expected))) {
        bad_file(data, "cannot be read");
    }
    return array;
}

void write_cfl(const std::string& base, const std::vector<Index>& dims, const Complex* values)
{
    Index count = 1;
    std::ostringstream sizes;
    for (const Index n : dims) {
        count *= n;
        sizes << n << ' ';
    }
    const std::string header = base + ".hdr", data = base + ".cfl";
    const std::string temporary_header = header + ".partial", temporary_data = data + ".partial";
    const auto discard = [&] {
        std::remove(temporary_header.c_str());
        std::remove(temporary_data.c_str());
    };
    {
        std::ofstream out(temporary_header);
        out << "# Dimensions\n" << sizes.str() << '\n';
        if (!out.flush()) {
            discard();
            bad_file(header, "cannot be written");
        }
    }
    {
        std::ofstream out(temporary_data, std::ios::binary);
        if (!out.write(reinterpret_cast<const char*>(values), static_cast<std::streamsize>(count * sizeof(Complex))) ||
            !out.flush()) {
            discard();
            bad_file(data, "cannot be written");
        }
    }
    if (std::rename(temporary_data.c_str(), data.c_str()) != 0) {
        discard();
        bad_file(data, "cannot be written");
    }
    if (std::rename(temporary_header.c_str(), header.c_str()) != 0) {
        discard();
        std::remove(data.c_str());
        bad_file(header, "cannot be written");
    }
}
