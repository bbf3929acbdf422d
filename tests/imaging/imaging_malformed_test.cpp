#include "tests/imaging/imaging_module.h"

#include <random>

namespace klv {
namespace {

using namespace klv::imaging;
using test::file_bytes;
using test::image;

class MalformedImages : public test::imaging_module_test {
protected:
    struct sample {
        imaging_format format;
        file_bytes bytes;
    };
    /// A small file of every format that is written.
    std::vector<sample> samples()
    {
        std::vector<sample> all;
        for (const imaging_format format :
            {format_bmp, format_png, format_jpeg, format_tiff, format_photoshop, format_pcx, format_targa}) {
            image made;
            EXPECT_EQ(module_.create(&made.handle, conventional_memory, 9, 7, 24, 1, nullptr, top_left),
                imaging_ok);
            for (std::int32_t i = 0; i < made.handle.bytes_per_line * 7; ++i)
                made.lines.push_back(static_cast<std::uint8_t>(i * 37));
            file_bytes bytes;
            if (write(made, format, bytes) == imaging_ok)
                all.push_back({format, bytes});
        }
        return all;
    }
};

TEST_F(MalformedImages, CutFilesAreAnswered)
{
    for (const sample& each : samples())
        for (std::size_t size = 0; size < each.bytes.size(); ++size) {
            image loaded;
            const std::int32_t result
                = read({each.bytes.begin(), each.bytes.begin() + static_cast<std::ptrdiff_t>(size)}, loaded);
            // The end of some formats says nothing about the picture.
            if (size < std::min<std::size_t>(each.bytes.size() / 2, 300)) {
                EXPECT_NE(result, imaging_ok) << each.format << " cut at " << size;
            }
        }
}

TEST_F(MalformedImages, ChangedBytesAreAnswered)
{
    std::mt19937 random(4);
    for (const sample& each : samples())
        for (int turn = 0; turn < 300; ++turn) {
            file_bytes bytes = each.bytes;
            for (int i = 0; i < 3; ++i)
                bytes[random() % std::min<std::size_t>(bytes.size(), 160)]
                    = static_cast<std::uint8_t>(random());
            image loaded;
            (void)read(bytes, loaded);
            EXPECT_LE(loaded.lines.size(), std::size_t{1} << 26);
        }
}

TEST_F(MalformedImages, FewBytesPromiseNoGreatPicture)
{
    for (const sample& each : samples()) {
        file_bytes bytes = each.bytes;
        bytes.resize(std::min<std::size_t>(bytes.size(), 200));
        const auto put16 = [&](std::size_t at, bool big) {
            bytes[at] = big ? 0xEA : 0x60; // 60000
            bytes[at + 1] = big ? 0x60 : 0xEA;
        };
        switch (each.format) {
        case format_bmp:
            put16(18, false);
            put16(22, false);
            break;
        case format_photoshop:
            bytes[14 + 2] = bytes[18 + 2] = 0x75; // 30000
            break;
        case format_pcx:
            put16(8, false);
            put16(10, false);
            break;
        case format_targa:
            put16(12, false);
            put16(14, false);
            break;
        case format_jpeg:
            // The frame header lies behind the two tables of a picture of this quality.
            for (std::size_t at = 2; at + 9 < bytes.size(); ++at)
                if (bytes[at] == 0xFF && bytes[at + 1] == 0xC0) {
                    put16(at + 5, true);
                    put16(at + 7, true);
                }
            break;
        default:
            continue; // their own tests declare too much
        }
        image loaded;
        EXPECT_NE(read(bytes, loaded), imaging_ok) << each.format;
        EXPECT_TRUE(loaded.lines.empty()) << each.format << ": refused before a bitmap is made";
    }
}

TEST_F(MalformedImages, LongCommentsOfPngCostNothing)
{
    // A comment chunk that says it has 1.9 gigabytes, where the picture should begin.
    const file_bytes bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0,
        0, 100, 0, 0, 0, 100, 8, 4, 0, 0, 0, 0xDA, 0xEB, 0x5D, 0xDF, 0x74, 0, 0, 0x1D, 't', 'E', 'X', 't',
        'C'};
    image loaded;
    EXPECT_EQ(read(bytes, loaded), imaging_bad_data);
}

TEST_F(MalformedImages, WhatNoFormatKnowsIsUnsupported)
{
    image loaded;
    EXPECT_EQ(read({}, loaded), imaging_unsupported);
    EXPECT_EQ(read({'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0}, loaded), imaging_unsupported);
    EXPECT_EQ(read(file_bytes(3000, 0xFF), loaded), imaging_unsupported);
    image made;
    ASSERT_EQ(module_.create(&made.handle, conventional_memory, 1, 1, 24, 1, nullptr, top_left), imaging_ok);
    made.lines.resize(4);
    file_bytes bytes;
    for (const imaging_format format : {format_gif, format_photo_cd, format_flashpix, format_unknown})
        EXPECT_EQ(write(made, format, bytes), imaging_unsupported) << format;
}

} // namespace
} // namespace klv
