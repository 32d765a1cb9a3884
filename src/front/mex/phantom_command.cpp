#include "front/mex/phantom_command.hpp"

#include <algorithm>
#include <cmath>

#include "front/mex/result_array.hpp"
#include "recon/phantom.hpp"
#include "recon/recon_error.hpp"

void phantom_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    const bool sizes_given = nrhs == 2 && mxIsDouble(prhs[1]) && !mxIsComplex(prhs[1]) && !mxIsSparse(prhs[1]) &&
                             (mxGetNumberOfElements(prhs[1]) == 2 || mxGetNumberOfElements(prhs[1]) == 3);
    if (!sizes_given || nlhs > 2) {
        throw ReconError("homodyne:usage", "usage: [IMAGE, KSPACE] = homodyne_recon_mex('phantom', [nx ny nz]).");
    }
    std::array<Index, 3> n{1, 1, 1};
    const double* sizes = mxGetPr(prhs[1]);
    for (std::size_t a = 0; a < mxGetNumberOfElements(prhs[1]); ++a) {
        if (!(sizes[a] >= 1.0 && sizes[a] < 2147483648.0 && sizes[a] == std::floor(sizes[a]))) {
            throw ReconError("homodyne:badInput", "SIZES must be [nx ny] or [nx ny nz] of positive whole numbers.");
        }
        n[a] = static_cast<Index>(sizes[a]);
    }
    const Phantom phantom = make_phantom(n);
    const std::vector<Index> dims(n.begin(), n.end());
    const auto result = [&](const std::vector<Complex>& values) {
        ResultArray array(dims, false, true);
        std::copy(values.begin(), values.end(), reinterpret_cast<Complex*>(array.values()));
        return array.finish(0, "IMAGE");
    };
    plhs[0] = result(phantom.image);
    if (nlhs > 1) {
        plhs[1] = result(phantom.kspace);
    }
}
