#pragma once
// An output file written under a temporary name beside its final one and
// renamed into place only when every output is complete, so a failure never
// leaves a partial or stale-looking result behind. The temporary file is
// removed unless the file was committed.

#include <functional>
#include <string>

class PendingFile {
public:
    explicit PendingFile(std::string final_path);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    // Runs `write` on the temporary path; a ReconError it throws is passed
    // on naming the final path instead.
    void write(const std::function<void(const std::string& path)>& write);
    // Renames the temporary file to the final path (ReconError
    // homodyne:badFile naming the final path on failure).
    void commit();

private:
    std::string final_, temporary_;
    bool committed_ = false;
};
