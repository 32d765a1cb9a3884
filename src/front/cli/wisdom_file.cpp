#include "front/cli/wisdom_file.hpp"

#include <fstream>
#include <sstream>

#include "front/cli/pending_file.hpp"
#include "recon/recon_error.hpp"
#include "recon/volume_transform.hpp"

namespace {

bool read_text(const std::string& path, std::string& text)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream contents;
    contents << in.rdbuf();
    text = contents.str();
    return static_cast<bool>(in);
}

}  // namespace

std::string load_wisdom(const std::string& path)
{
    std::ifstream probe(path);
    if (!probe) {
        return "";
    }
    std::string text;
    if (!read_text(path, text) || !add_toolbox_wisdom(text)) {
        return path + ": not FFTW wisdom; the transforms are measured again";
    }
    return "";
}

std::string save_wisdom(const std::string& path)
{
    const std::string wisdom = toolbox_wisdom();
    std::string stored;
    if (wisdom.empty() || (read_text(path, stored) && stored == wisdom)) {
        return "";
    }
    try {
        PendingFile file(path);
        file.write([&](const std::string& temporary) {
            std::ofstream out(temporary, std::ios::binary);
            out << wisdom;
            if (!out.flush()) {
                throw ReconError("homodyne:badFile", temporary + ": cannot be written");
            }
        });
        file.commit();
    } catch (const ReconError& error) {
        return std::string(error.what()) + "; the wisdom is not kept";
    }
    return "";
}
