// .hdr/.cfl pairs: what is written reads back, and every lie of a pair is
// refused naming the file before anything is allocated.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "io/cfl.hpp"
#include "recon/recon_error.hpp"

namespace {

std::string data_base(const std::string& name) { return std::string(TEST_DATA_DIR) + "/cfl_" + name; }

void write_text(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

void write_bytes(const std::string& path, std::size_t count) { std::ofstream(path, std::ios::binary) << std::string(count, '\0'); }

}  // namespace

TEST(Cfl, WrittenArraysReadBackWithTheirSizes)
{
    const std::string base = data_base("round");
    const std::vector<Complex> values = {{1.0f, -2.0f}, {3.5f, 0.0f}, {-0.25f, 1e-30f}, {7.0f, 8.0f}, {0.0f, 1.0f}, {2.0f, 2.0f}};
    write_cfl(base, {3, 1, 2}, values.data());
    const CflArray read = read_cfl(base);
    EXPECT_EQ(read.dims, (std::vector<Index>{3, 1, 2}));
    EXPECT_EQ(read.values, values);
    EXPECT_EQ(std::filesystem::file_size(base + ".cfl"), 48u);
    EXPECT_FALSE(std::filesystem::exists(base + ".cfl.partial"));

    // Headers of other writers: further comment sections, sizes padded with ones.
    write_text(base + ".hdr", "# Dimensions\n3 1 2 1 1 \n# Command\nsomething 1 2\n");
    EXPECT_EQ(read_cfl(base).dims, (std::vector<Index>{3, 1, 2, 1, 1}));
}

TEST(Cfl, PairsThatLieAreRefusedNamingTheFile)
{
    const std::string base = data_base("lie");
    const struct {
        const char* header;  // null: no .hdr
        std::size_t bytes;   // of the .cfl
        std::string file, fault;
    } cases[] = {
        {nullptr, 16, ".hdr", "no such file"},
        {"# Dimensions\n2 2\n", 24, ".cfl", "holds 24 bytes, but " + base + ".hdr declares 4 samples (32 bytes)"},
        {"# Dimensions\n2 1\n", 32, ".cfl", "holds 32 bytes"},
        {"# Dimensions\n2 x\n", 16, ".hdr", "the size 'x' is not a positive whole number"},
        {"# Dimensions\n2 0\n", 0, ".hdr", "the size '0' is not a positive whole number"},
        {"# Dimensions\n4294967296 4294967296 1\n", 8, ".hdr", "the sizes declare more than 2^40 samples"},
        {"# Dimensions\n\n", 8, ".hdr", "no sizes"},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(base + ".hdr");
        if (c.header != nullptr) {
            write_text(base + ".hdr", c.header);
        }
        write_bytes(base + ".cfl", c.bytes);
        try {
            read_cfl(base);
            ADD_FAILURE() << c.fault;
        } catch (const ReconError& e) {
            EXPECT_EQ(e.id, "homodyne:badFile");
            EXPECT_EQ(std::string(e.what()).rfind(base + c.file + ": " + c.fault, 0), 0u) << e.what();
        }
    }
    std::filesystem::remove(base + ".cfl");
    write_text(base + ".hdr", "# Dimensions\n1\n");
    EXPECT_THROW(read_cfl(base), ReconError);  // no .cfl

    const Complex one(1.0f, 0.0f);
    const std::string unwritable = data_base("no_such_folder/out");
    EXPECT_THROW(write_cfl(unwritable, {1}, &one), ReconError);
    EXPECT_FALSE(std::filesystem::exists(unwritable + ".hdr"));
}
