// TEMPORARY stand-in (not committed).
#include "io/cfl.hpp"
#include <fstream>
#include <sstream>
#include "recon/recon_error.hpp"
CflArray read_cfl(const std::string& name)
{
    std::ifstream hdr(name + ".hdr"); if (!hdr) throw ReconError("homodyne:badFile", name + ".hdr: no such file");
    std::string line; std::getline(hdr, line); std::getline(hdr, line); std::istringstream in(line);
    CflArray a; Index n, count = 1; while (in >> n) { a.dims.push_back(n); count *= n; }
    a.values.resize(count); std::ifstream cfl(name + ".cfl", std::ios::binary); cfl.read(reinterpret_cast<char*>(a.values.data()), count * 8);
    if (!cfl) throw ReconError("homodyne:badFile", name + ".cfl: truncated");
    return a;
}
void write_cfl(const std::string& name, const std::vector<Index>& dims, const Complex* values)
{
    std::ofstream hdr(name + ".hdr"); hdr << "# Dimensions\n"; Index count = 1; for (Index n : dims) { hdr << n << " "; count *= n; } hdr << "\n";
    std::ofstream cfl(name + ".cfl", std::ios::binary); cfl.write(reinterpret_cast<const char*>(values), count * 8);
}
