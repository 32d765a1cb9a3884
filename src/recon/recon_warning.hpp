#pragma once
// A warning of the core: the call goes on, and the front end shows it in its
// own way (Octave's warning() with the identifier, a line on the command
// line's stderr, Python's warnings.warn). The core never prints.

#include <string>
#include <vector>

struct ReconWarning {
    std::string id;       // "homodyne:oneSided", "homodyne:zLooksLikeVolumes", ...
    std::string message;  // one sentence or two, without the front end's name
};

using ReconWarnings = std::vector<ReconWarning>;
