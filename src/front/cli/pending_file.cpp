#include "front/cli/pending_file.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "io/raw_file_check.hpp"
#include "recon/recon_error.hpp"

PendingFile::PendingFile(std::string final_path)
    : final_(std::move(final_path)), temporary_(final_ + ".partial-" + std::to_string(getpid()))
{
}

PendingFile::~PendingFile()
{
    if (!committed_) {
        std::remove(temporary_.c_str());
    }
}

void PendingFile::write(const std::function<void(const std::string& path)>& write)
{
    try {
        write(temporary_);
    } catch (const ReconError& error) {
        std::string message = error.what();
        if (message.compare(0, temporary_.size(), temporary_) == 0) {
            message.replace(0, temporary_.size(), final_);
        }
        throw ReconError(error.id, message);
    }
}

void PendingFile::commit()
{
    if (std::rename(temporary_.c_str(), final_.c_str()) != 0) {
        throw ReconError("homodyne:badFile", file_fault(final_, std::string("cannot be written: ") + std::strerror(errno)));
    }
    committed_ = true;
}
