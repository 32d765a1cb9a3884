#include "recon/volume_transform.hpp"

#include <fftw3.h>

#include <cstdlib>
#if defined(__linux__)
#include <sys/mman.h>
#endif
#include <new>
#include <string>

#include "recon/recon_error.hpp"

namespace {

// Whole-volume buffers live for one call, and every first touch of a page
// faults: with 4 KiB pages a 35 MB buffer cost 8,600 faults, 150 ms on a
// virtual machine (a sixth of a POCS call on 180 x 216 x 180). Buffers of
// two huge pages or more are asked for in huge pages where Linux offers
// them (transparent huge pages in "madvise" mode or "always"); all others
// are FFTW's own allocations.
constexpr std::size_t huge_page = std::size_t{2} << 20;

bool in_huge_pages(std::size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    return bytes >= 2 * huge_page;
#else
    return false;
#endif
}

Complex* allocate(std::size_t bytes)
{
    void* p = nullptr;
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (in_huge_pages(bytes)) {
        if (posix_memalign(&p, huge_page, bytes) != 0) {
            return nullptr;
        }
        madvise(p, bytes, MADV_HUGEPAGE);  // a hint: refused, the pages stay small
        return static_cast<Complex*>(p);
    }
#endif
    p = fftwf_malloc(bytes);
    return static_cast<Complex*>(p);
}

std::size_t bytes_of(Index count) { return sizeof(Complex) * static_cast<std::size_t>(count > 0 ? count : 1); }

}  // namespace

ComplexBuffer::ComplexBuffer(Index count) : data_(allocate(bytes_of(count)), Free{in_huge_pages(bytes_of(count))})
{
    if (!data_) {
        throw std::bad_alloc();
    }
}

void ComplexBuffer::Free::operator()(Complex* p) const
{
    if (huge) {
        std::free(p);
    } else {
        fftwf_free(p);
    }
}

namespace {

fftwf_complex* as_fftw(Complex* p) { return reinterpret_cast<fftwf_complex*>(p); }

// FFTW_MEASURE times candidate plans on the scratch buffer: 5-7x faster
// transforms than FFTW_ESTIMATE's guesses on 256 x 256 x 64 (measured),
// for 1-14 s of planning the first time a shape is seen in a process. A
// planning time limit of 0.5 s per plan was tried and made POCS on 8 coils
// of that size about 3x slower, so planning is left unbounded.

// FFTW's wisdom (the plans it has measured) is global to the process and
// shared with the host's own fft. For the length of one planning, the
// host's wisdom is set aside and the toolbox's own put in its place; after
// it, the toolbox keeps what it learned and the host gets its wisdom back
// exactly as it was. Planning runs on one thread only (see the header).
std::string& own_wisdom()
{
    static std::string wisdom;
    return wisdom;
}

std::string export_wisdom()
{
    char* text = fftwf_export_wisdom_to_string();
    std::string copy = text != nullptr ? text : "";
    std::free(text);
    return copy;
}

class PlannerWisdom {
public:
    PlannerWisdom() : host_(export_wisdom())
    {
        fftwf_forget_wisdom();
        if (!own_wisdom().empty()) {
            fftwf_import_wisdom_from_string(own_wisdom().c_str());
        }
    }
    ~PlannerWisdom()
    {
        own_wisdom() = export_wisdom();
        fftwf_forget_wisdom();
        fftwf_import_wisdom_from_string(host_.c_str());
    }
    PlannerWisdom(const PlannerWisdom&) = delete;
    PlannerWisdom& operator=(const PlannerWisdom&) = delete;

private:
    std::string host_;
};

}  // namespace

std::string toolbox_wisdom() { return own_wisdom(); }

bool add_toolbox_wisdom(const std::string& text)
{
    const PlannerWisdom wisdom;
    return fftwf_import_wisdom_from_string(text.c_str()) != 0;
}

VolumeTransform::VolumeTransform(const std::array<Index, 3>& n, const std::array<bool, 3>& axes, bool measured)
    : n_(n)
{
    // The chosen axes are the transform's dimensions, the others its loop,
    // slowest first as FFTW lists them.
    fftwf_iodim chosen[3], loop[3];
    int rank = 0, loops = 0;
    Index stride = n[0] * n[1];
    for (int axis = 2; axis >= 0; --axis) {
        const fftwf_iodim dim{static_cast<int>(n[axis]), static_cast<int>(stride), static_cast<int>(stride)};
        if (axes[axis]) {
            chosen[rank++] = dim;
            transformed_ *= n[axis];
        } else if (n[axis] > 1) {
            loop[loops++] = dim;
        }
        stride /= axis > 0 ? n[axis - 1] : 1;
    }
    if (rank == 0) {
        return;
    }
    ComplexBuffer scratch(voxels());
    fftwf_complex* data = as_fftw(scratch.data());
    const PlannerWisdom wisdom;
    const unsigned flags = measured ? FFTW_MEASURE : FFTW_ESTIMATE;
    inverse_ = fftwf_plan_guru_dft(rank, chosen, loops, loop, data, data, FFTW_BACKWARD, flags);
    forward_ = fftwf_plan_guru_dft(rank, chosen, loops, loop, data, data, FFTW_FORWARD, flags);
    if (inverse_ == nullptr || forward_ == nullptr) {
        release();
        throw ReconError("homodyne:internal", "FFTW could not plan a transform of the image size.");
    }
}

VolumeTransform::~VolumeTransform() { release(); }

void VolumeTransform::release()
{
    if (inverse_ != nullptr) {
        fftwf_destroy_plan(static_cast<fftwf_plan>(inverse_));
    }
    if (forward_ != nullptr) {
        fftwf_destroy_plan(static_cast<fftwf_plan>(forward_));
    }
    inverse_ = forward_ = nullptr;
}

void VolumeTransform::inverse(Complex* data) const
{
    if (inverse_ == nullptr) {
        return;
    }
    fftwf_execute_dft(static_cast<fftwf_plan>(inverse_), as_fftw(data), as_fftw(data));
}

void VolumeTransform::forward(Complex* data) const
{
    if (forward_ == nullptr) {
        return;
    }
    fftwf_execute_dft(static_cast<fftwf_plan>(forward_), as_fftw(data), as_fftw(data));
}
