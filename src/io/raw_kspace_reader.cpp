// Reading the readouts of an ISMRMRD file into the canonical k-space order:
// one pass over the readouts, each checked against the header and then
// placed by its encoding counters into the buffer of its volume (made when
// the volume is first seen), then the volumes joined in counter order and
// the sampled ranges checked against the data.
//
// Readouts that repeat the counters of one already placed (a line measured
// again without its own average counter) are averaged with it, as the
// average counter's repeats would be by a scanner's reconstruction: a copy
// stored twice gives the line unchanged, and true repeats gain in SNR.

#include <ismrmrd/dataset.h>
#include <ismrmrd/xml.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <optional>

#include "io/raw_file_check.hpp"
#include "io/raw_kspace.hpp"
#include "io/readout_crop.hpp"
#include "io/readout_table.hpp"
#include "io/sampled_range.hpp"
#include "recon/recon_error.hpp"

const std::array<const char*, VOLUME_COUNTERS> kVolumeCounterNames{"slice", "contrast", "phase", "repetition", "set", "average"};

namespace {

using Counters = std::array<std::uint16_t, VOLUME_COUNTERS>;
using Header = ISMRMRD::ISMRMRD_AcquisitionHeader;
using Sample = std::complex<float>;

struct NoiseReadout {
    Index number;  // in the file
    Index samples;
    Index channels;
    std::vector<Sample> values;  // samples x channels
};

struct Volume {
    std::vector<std::complex<float>> kspace;
    std::vector<Index> held;  // y x z: how many readouts were placed there
    VolumeGeometry geometry;
};

[[noreturn]] void fail(const std::string& path, const std::string& what)
{
    throw ReconError("homodyne:badFile", file_fault(path, what));
}

bool has_flag(const Header& head, ISMRMRD::ISMRMRD_AcquisitionFlags flag)
{
    return (head.flags & (std::uint64_t{1} << (flag - 1))) != 0;
}

// Readouts that are not k-space of the image: navigators, phase correction,
// dummy scans, feedback and surface-coil scans.
bool is_auxiliary(const Header& head)
{
    for (auto flag : {ISMRMRD::ISMRMRD_ACQ_IS_NAVIGATION_DATA, ISMRMRD::ISMRMRD_ACQ_IS_PHASECORR_DATA,
                      ISMRMRD::ISMRMRD_ACQ_IS_DUMMYSCAN_DATA, ISMRMRD::ISMRMRD_ACQ_IS_RTFEEDBACK_DATA,
                      ISMRMRD::ISMRMRD_ACQ_IS_HPFEEDBACK_DATA, ISMRMRD::ISMRMRD_ACQ_IS_SURFACECOILCORRECTIONSCAN_DATA}) {
        if (has_flag(head, flag)) {
            return true;
        }
    }
    return false;
}

Counters counters_of(const Header& head)
{
    const ISMRMRD::ISMRMRD_EncodingCounters& idx = head.idx;
    return {idx.slice, idx.contrast, idx.phase, idx.repetition, idx.set, idx.average};
}

VolumeGeometry geometry_of(const Header& head)
{
    VolumeGeometry g;
    g.counters = counters_of(head);
    // The library packs its header to 2-byte alignment: copy its float
    // arrays bytewise rather than through float pointers.
    std::memcpy(g.position.data(), head.position, sizeof head.position);
    std::memcpy(g.read_dir.data(), head.read_dir, sizeof head.read_dir);
    std::memcpy(g.phase_dir.data(), head.phase_dir, sizeof head.phase_dir);
    std::memcpy(g.slice_dir.data(), head.slice_dir, sizeof head.slice_dir);
    std::memcpy(g.patient_table_position.data(), head.patient_table_position, sizeof head.patient_table_position);
    g.acquisition_time_stamp = head.acquisition_time_stamp;
    return g;
}

// The header's block and centre of a phase-encoding axis: k = counter - centre.
struct PhaseAxis {
    std::string name;
    Index n = 1;
    Index centre_counter = 0;
    std::optional<KRange> declared;

    // Index of a counter value on the axis, or -1 outside it.
    Index index_of(Index counter) const
    {
        const Index i = counter - centre_counter + n / 2;
        return i >= 0 && i < n ? i : -1;
    }
};

PhaseAxis phase_axis(const char* name, Index n, const ISMRMRD::Optional<ISMRMRD::Limit>& limit)
{
    PhaseAxis axis{name, n, n / 2, std::nullopt};
    if (limit) {
        axis.centre_counter = limit->center;
        axis.declared = KRange{Index{limit->minimum} - limit->center, Index{limit->maximum} - limit->center};
    }
    return axis;
}

// The readout's samples along x: where sample 0 lands on the encoded axis,
// and the samples kept between the discarded ones.
struct ReadoutPlacement {
    Index samples = 0;
    Index channels = 0;
    Index centre_sample = 0;
    Index discard_pre = 0;
    Index discard_post = 0;
    Index offset = 0;  // encoded index of sample 0

    bool same_samples(const ReadoutPlacement& other) const
    {
        return samples == other.samples && centre_sample == other.centre_sample && discard_pre == other.discard_pre &&
               discard_post == other.discard_post;
    }
};

class KspaceAssembler {
public:
    KspaceAssembler(const std::string& path, const ISMRMRD::Encoding& encoding, bool remove_oversampling)
        : path_(path), encoding_(encoding)
    {
        const auto& encoded = encoding.encodedSpace;
        const auto& recon = encoding.reconSpace;
        raw_.encoded_matrix = {encoded.matrixSize.x, encoded.matrixSize.y, encoded.matrixSize.z};
        raw_.recon_matrix = {recon.matrixSize.x, recon.matrixSize.y, recon.matrixSize.z};
        for (int a = 0; a < 3; ++a) {
            if (raw_.encoded_matrix[a] < 1) {
                fail(path, "the encoded matrix size is 0 along an axis");
            }
        }
        encoded_x_ = raw_.encoded_matrix[0];
        raw_.oversampling_removed = remove_oversampling && recon.matrixSize.x >= 1 && recon.matrixSize.x < encoded_x_;
        raw_.shape.n = {raw_.oversampling_removed ? Index{recon.matrixSize.x} : encoded_x_, raw_.encoded_matrix[1],
                        raw_.encoded_matrix[2]};
        raw_.fov_mm = {raw_.oversampling_removed ? recon.fieldOfView_mm.x : encoded.fieldOfView_mm.x,
                       encoded.fieldOfView_mm.y, encoded.fieldOfView_mm.z};
        y_ = phase_axis("kspace_encode_step_1", raw_.shape.n[1], encoding.encodingLimits.kspace_encoding_step_1);
        z_ = phase_axis("kspace_encode_step_2", raw_.shape.n[2], encoding.encodingLimits.kspace_encoding_step_2);
    }

    void add(const Header& head, const Sample* samples)
    {
        const Index number = number_++;
        if (head.encoding_space_ref != 0 || is_auxiliary(head)) {
            return;
        }
        if (has_flag(head, ISMRMRD::ISMRMRD_ACQ_IS_NOISE_MEASUREMENT)) {
            add_noise(number, head, samples);
            return;
        }
        check_readout_against_header(path_, number, encoding_, head);
        place_readout(head, samples);
    }

    RawKspace finish()
    {
        if (volumes_.empty()) {
            fail(path_, "no readouts of the image (the file holds " + std::to_string(noise_.size()) + " noise readouts and nothing else)");
        }
        join_volumes();
        find_ranges();
        gather_noise();
        return std::move(raw_);
    }

private:
    // Keeps the samples between the discarded ones of every channel.
    void add_noise(Index number, const Header& head, const Sample* samples)
    {
        const Index stored = head.number_of_samples;
        const Index kept = std::max<Index>(0, stored - head.discard_pre - head.discard_post);
        NoiseReadout readout{number, kept, head.active_channels, {}};
        for (Index c = 0; c < readout.channels; ++c) {
            const Sample* first = samples + c * stored + head.discard_pre;
            readout.values.insert(readout.values.end(), first, first + kept);
        }
        noise_.push_back(std::move(readout));
        if (noise_time_us_ == 0) {
            noise_time_us_ = head.sample_time_us;
        }
    }

    void check_readout(const Header& head)
    {
        const ReadoutPlacement seen{head.number_of_samples, head.active_channels, head.center_sample,
                                    head.discard_pre, head.discard_post, 0};
        if (seen.samples < 1 || seen.channels < 1) {
            fail(path_, "a readout has " + std::to_string(seen.samples) + " samples and " + std::to_string(seen.channels) + " channels");
        }
        if (readout_.samples == 0) {
            check_readout_length(path_, seen.samples, seen.centre_sample, encoded_x_, raw_.recon_matrix[0]);
            check_phase_limits(path_, "y", raw_.shape.n[1], encoding_.encodingLimits.kspace_encoding_step_1);
            check_phase_limits(path_, "z", raw_.shape.n[2], encoding_.encodingLimits.kspace_encoding_step_2);
            readout_ = seen;
            readout_.offset = encoded_x_ / 2 - seen.centre_sample;
            raw_.shape.coils = seen.channels;
            raw_.sample_time_us = head.sample_time_us;
            raw_.measurement_uid = head.measurement_uid;
            check_kspace_fits_memory(path_, static_cast<double>(raw_.shape.voxels()) * static_cast<double>(raw_.shape.coils),
                                     "the header's matrix and the readouts' channels");
            line_.resize(encoded_x_);
            if (raw_.oversampling_removed) {
                crop_ = std::make_unique<ReadoutCrop>(encoded_x_, raw_.shape.n[0]);
                cropped_.resize(raw_.shape.n[0]);
            }
            return;
        }
        if (!seen.same_samples(readout_)) {
            fail(path_, "readouts differ in their samples (" + samples_text(seen) + " after " + samples_text(readout_) +
                            "); one sampled readout range is needed");
        }
        if (seen.channels != readout_.channels) {
            fail(path_, "readouts differ in their channel count (" + std::to_string(seen.channels) + " after " +
                            std::to_string(readout_.channels) + ")");
        }
    }

    Volume& volume_of(const Header& head)
    {
        const Counters key = counters_of(head);
        auto found = volumes_.find(key);
        if (found != volumes_.end()) {
            return found->second;
        }
        double samples = static_cast<double>(raw_.shape.volume_stride());
        for (int c = 0; c < VOLUME_COUNTERS; ++c) {
            samples *= static_cast<double>(std::max<Index>(key[c] + 1, extent_[c]));
        }
        check_kspace_fits_memory(path_, samples, "the volumes that the readouts' counters span");
        for (int c = 0; c < VOLUME_COUNTERS; ++c) {
            extent_[c] = std::max<Index>(key[c] + 1, extent_[c]);
        }
        Volume& volume = volumes_[key];
        volume.kspace.assign(raw_.shape.volume_stride(), {});
        volume.held.assign(raw_.shape.n[1] * raw_.shape.n[2], 0);
        volume.geometry = geometry_of(head);
        return volume;
    }

    void place_readout(const Header& head, const Sample* samples)
    {
        check_readout(head);
        const ISMRMRD::ISMRMRD_EncodingCounters& idx = head.idx;
        const Index iy = y_.index_of(idx.kspace_encode_step_1);
        const Index iz = z_.index_of(idx.kspace_encode_step_2);
        if (iy < 0 || iz < 0) {
            const PhaseAxis& axis = iy < 0 ? y_ : z_;
            fail(path_, axis.name + " = " + std::to_string(iy < 0 ? idx.kspace_encode_step_1 : idx.kspace_encode_step_2) +
                            " lies outside the encoded matrix of " + std::to_string(axis.n) + " with its centre at " +
                            std::to_string(axis.centre_counter));
        }
        Volume& volume = volume_of(head);
        Index& held = volume.held[iz * raw_.shape.n[1] + iy];
        repeats_ += held > 0;
        ++held;
        const bool reversed = has_flag(head, ISMRMRD::ISMRMRD_ACQ_IS_REVERSE);
        const Index nx = raw_.shape.n[0];
        for (Index c = 0; c < readout_.channels; ++c) {
            const Sample* channel = samples + c * readout_.samples;
            std::fill(line_.begin(), line_.end(), Sample{});
            for (Index s = 0; s < readout_.samples; ++s) {
                const Index t = reversed ? readout_.samples - 1 - s : s;  // in the order of acquisition
                if (t >= readout_.discard_pre && t < readout_.samples - readout_.discard_post) {
                    line_[readout_.offset + s] = channel[t];
                }
            }
            const std::complex<float>* line = line_.data();
            if (crop_) {
                crop_->apply(line_.data(), cropped_.data());
                line = cropped_.data();
            }
            std::complex<float>* target = volume.kspace.data() + c * raw_.shape.voxels() + (iz * raw_.shape.n[1] + iy) * nx;
            for (Index x = 0; x < nx; ++x) {
                target[x] += line[x];
            }
        }
    }

    // Each line placed more than once becomes the mean of its readouts.
    void average_repeats(Volume& volume)
    {
        const Index nx = raw_.shape.n[0];
        for (Index line = 0; line < static_cast<Index>(volume.held.size()); ++line) {
            if (volume.held[line] < 2) {
                continue;
            }
            const float share = 1.0f / static_cast<float>(volume.held[line]);
            for (Index c = 0; c < raw_.shape.coils; ++c) {
                Sample* target = volume.kspace.data() + c * raw_.shape.voxels() + line * nx;
                for (Index x = 0; x < nx; ++x) {
                    target[x] *= share;
                }
            }
        }
    }

    void join_volumes()
    {
        raw_.counter_sizes = extent_;
        raw_.shape.volumes = 1;
        for (Index e : extent_) {
            raw_.shape.volumes *= e;
        }
        raw_.volumes.assign(raw_.shape.volumes, VolumeGeometry{});
        const Index acquired = static_cast<Index>(volumes_.size());
        for (auto& volume : volumes_) {
            average_repeats(volume.second);
        }
        if (raw_.shape.volumes == 1) {  // the common case, without a copy
            Volume& only = volumes_.begin()->second;
            raw_.kspace = std::move(only.kspace);
            raw_.volumes[0] = only.geometry;
            held_ = std::move(only.held);
            volumes_.clear();
        } else {
            raw_.kspace.assign(raw_.shape.samples(), {});
            held_.assign(raw_.shape.n[1] * raw_.shape.n[2], 0);
        }
        for (auto it = volumes_.begin(); it != volumes_.end(); it = volumes_.erase(it)) {
            Index v = 0;
            for (int c = VOLUME_COUNTERS - 1; c >= 0; --c) {
                v = v * extent_[c] + it->first[c];
            }
            std::copy(it->second.kspace.begin(), it->second.kspace.end(), raw_.kspace.begin() + v * raw_.shape.volume_stride());
            raw_.volumes[v] = it->second.geometry;
            for (std::size_t i = 0; i < held_.size(); ++i) {
                held_[i] = std::max(held_[i], it->second.held[i]);
            }
        }
        if (acquired < raw_.shape.volumes) {
            raw_.warnings.push_back(file_fault(path_, std::to_string(raw_.shape.volumes - acquired) + " of " +
                                                          std::to_string(raw_.shape.volumes) +
                                                          " volumes of the counters' grid hold no readouts; they are zero"));
        }
        if (repeats_ > 0) {
            raw_.notes.push_back(std::to_string(repeats_) + " repeated readouts averaged");
            raw_.warnings.push_back(file_fault(path_, std::to_string(repeats_) +
                                                          " readouts repeat the counters of an earlier one; each such "
                                                          "line is the mean of its readouts"));
        }
    }

    void find_ranges()
    {
        const Index ny = raw_.shape.n[1];
        const Index nz = raw_.shape.n[2];
        AxisEvidence x{"the readout", std::vector<char>(raw_.shape.n[0], 0), {}, std::nullopt};
        // Kept readout samples, in the output's k coordinates (scaled by the crop).
        const double scale = static_cast<double>(raw_.shape.n[0]) / static_cast<double>(encoded_x_);
        const Index first_k = readout_.offset - encoded_x_ / 2 + readout_.discard_pre;
        const Index last_k = readout_.offset - encoded_x_ / 2 + readout_.samples - 1 - readout_.discard_post;
        for (Index i = 0; i < raw_.shape.n[0]; ++i) {
            const double k = static_cast<double>(i - raw_.shape.n[0] / 2) / scale;
            x.held[i] = k >= static_cast<double>(first_k) && k <= static_cast<double>(last_k);
        }
        AxisEvidence y{y_.name, std::vector<char>(ny, 0), {}, y_.declared};
        AxisEvidence z{z_.name, std::vector<char>(nz, 0), {}, z_.declared};
        for (Index iz = 0; iz < nz; ++iz) {
            for (Index iy = 0; iy < ny; ++iy) {
                y.held[iy] |= held_[iz * ny + iy] > 0;
                z.held[iz] |= held_[iz * ny + iy] > 0;
            }
        }
        plane_energies(x.energy, y.energy, z.energy);
        raw_.ranges = {supported_range(x, path_, raw_.warnings), supported_range(y, path_, raw_.warnings),
                       supported_range(z, path_, raw_.warnings)};
        if (raw_.oversampling_removed) {
            zero_outside_readout(x.held);
        }
        Index missing = 0;
        for (Index iz = 0; iz < nz; ++iz) {
            for (Index iy = 0; iy < ny; ++iy) {
                missing += y.held[iy] && z.held[iz] && held_[iz * ny + iy] == 0;
            }
        }
        if (missing > 0) {
            raw_.warnings.push_back(file_fault(path_, std::to_string(missing) +
                                                          " lines inside the sampled block were not acquired (e.g. elliptical "
                                                          "scanning); they are zero"));
        }
    }

    // Sum of |sample|^2 over the data per index of each axis, of the lines as
    // averaged.
    void plane_energies(std::vector<double>& x, std::vector<double>& y, std::vector<double>& z) const
    {
        const ReconShape& s = raw_.shape;
        x.assign(s.n[0], 0.0);
        y.assign(s.n[1], 0.0);
        z.assign(s.n[2], 0.0);
        for (Index line = 0; line < s.samples() / s.n[0]; ++line) {
            const Sample* samples = raw_.kspace.data() + line * s.n[0];
            double line_energy = 0;
            for (Index i = 0; i < s.n[0]; ++i) {
                const double e = std::norm(std::complex<double>(samples[i]));
                x[i] += e;
                line_energy += e;
            }
            y[line % s.n[1]] += line_energy;
            z[line / s.n[1] % s.n[2]] += line_energy;
        }
    }

    // The crop spreads a partial echo a little past its edge; outside the held
    // block nothing was measured.
    void zero_outside_readout(const std::vector<char>& held)
    {
        const Index nx = raw_.shape.n[0];
        for (Index line = 0; line < raw_.shape.samples() / nx; ++line) {
            for (Index x = 0; x < nx; ++x) {
                if (!held[x]) {
                    raw_.kspace[line * nx + x] = {};
                }
            }
        }
    }

    void gather_noise()
    {
        leave_out_unusable_noise();
        Index samples = 0;
        for (const NoiseReadout& readout : noise_) {
            samples += readout.samples;
        }
        if (samples == 0) {
            return;
        }
        raw_.noise_samples = samples;
        raw_.noise.resize(samples * raw_.shape.coils);
        Index row = 0;
        for (const NoiseReadout& readout : noise_) {
            const Index n = readout.samples;
            for (Index c = 0; c < raw_.shape.coils; ++c) {
                std::copy(readout.values.begin() + c * n, readout.values.begin() + (c + 1) * n, raw_.noise.begin() + c * samples + row);
            }
            row += n;
        }
        double scale = raw_.oversampling_removed ? static_cast<double>(raw_.shape.n[0]) / static_cast<double>(encoded_x_) : 1.0;
        if (noise_time_us_ > 0 && raw_.sample_time_us > 0) {
            scale *= static_cast<double>(noise_time_us_) / static_cast<double>(raw_.sample_time_us);
        }
        raw_.noise_variance_scale = static_cast<float>(scale);
    }

    // Noise readouts of another channel count than the image's, or with no
    // sample kept, are named in one warning and in the notes, and left out.
    void leave_out_unusable_noise()
    {
        std::string numbers;
        Index left_out = 0;
        for (auto it = noise_.begin(); it != noise_.end();) {
            if (it->channels == raw_.shape.coils && it->samples > 0) {
                ++it;
                continue;
            }
            if (left_out < 3) {
                numbers += (left_out == 0 ? "" : ", ") + std::to_string(it->number) + " (" +
                           (it->samples > 0 ? std::to_string(it->channels) + " channels" : std::string("no sample kept")) + ")";
            }
            ++left_out;
            it = noise_.erase(it);
        }
        if (left_out > 0) {
            const std::string how_many = std::to_string(left_out) + " of " + std::to_string(left_out + noise_.size());
            raw_.notes.push_back(how_many + " noise readouts left out");
            raw_.warnings.push_back(file_fault(path_, how_many + " noise readouts left out, the image having " +
                                                          std::to_string(raw_.shape.coils) + " channels: readouts " + numbers +
                                                          (left_out > 3 ? ", ..." : "")));
        }
    }

    static std::string samples_text(const ReadoutPlacement& p)
    {
        std::string text = std::to_string(p.samples) + " centred at " + std::to_string(p.centre_sample);
        if (p.discard_pre > 0 || p.discard_post > 0) {
            text += ", discarding " + std::to_string(p.discard_pre) + " and " + std::to_string(p.discard_post);
        }
        return text;
    }

    std::string path_;
    ISMRMRD::Encoding encoding_;
    RawKspace raw_;
    Index encoded_x_ = 1;
    PhaseAxis y_;
    PhaseAxis z_;
    ReadoutPlacement readout_;
    std::unique_ptr<ReadoutCrop> crop_;
    std::vector<std::complex<float>> line_;
    std::vector<std::complex<float>> cropped_;
    std::map<Counters, Volume> volumes_;
    std::array<Index, VOLUME_COUNTERS> extent_{1, 1, 1, 1, 1, 1};
    std::vector<Index> held_;
    std::vector<NoiseReadout> noise_;
    float noise_time_us_ = 0;
    Index number_ = 0;   // of the next readout in the file
    Index repeats_ = 0;  // readouts placed on a line already held
};

ISMRMRD::Encoding first_encoding(const std::string& path, const std::string& xml)
{
    ISMRMRD::IsmrmrdHeader header;
    try {
        ISMRMRD::deserialize(xml.c_str(), header);
    } catch (const std::exception&) {
        fail(path, "the XML header is not a valid ISMRMRD header");
    }
    if (header.encoding.empty()) {
        fail(path, "the XML header declares no encoding space");
    }
    if (header.encoding[0].trajectory != ISMRMRD::TrajectoryType::CARTESIAN) {
        fail(path, "the first encoding space is not Cartesian");
    }
    return header.encoding[0];
}

}  // namespace

RawKspace read_raw_kspace(const std::string& path, const RawReadOptions& options)
{
    check_raw_file(path, options.group);
    std::string xml;
    {
        QuietHdf5 quiet;
        try {
            ISMRMRD::Dataset(path.c_str(), options.group.c_str(), false).readHeader(xml);
        } catch (const std::exception&) {
            fail(path, "the ISMRMRD header cannot be read (truncated or damaged)");
        }
    }
    KspaceAssembler assembler(path, first_encoding(path, xml), options.remove_oversampling);
    const ReadoutTable table(path, options.group);
    if (table.size() == 0) {
        fail(path, "no readouts");
    }
    table.for_each([&assembler](const Header& head, const Sample* samples) { assembler.add(head, samples); });
    RawKspace raw = assembler.finish();
    raw.xml_header = std::move(xml);
    return raw;
}
