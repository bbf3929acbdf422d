#include "klv/base/byte_reader.h"
#include "klv/base/byte_writer.h"
#include "klv/filters/raster/eps_filter.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"
#include "tests/filters/tiff_builder.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace klv {
namespace {

constexpr std::string_view text
    = "%!PS-Adobe-3.0 EPSF-3.0\r\n%%BoundingBox: 0 0 9 9\r\n%%EndComments\r\nshowpage\r\n";
constexpr std::uint32_t header_size = 30;

test::tiff_file preview_file() { return {.bits = {8}, .rows = {{1, 2}, {3, 250}}}; }

/// A file with the binary header.
struct dos_eps {
    std::string postscript{text};
    test::tiff_bytes tiff = preview_file().bytes();
    std::uint32_t promised_tiff = 0; ///< bytes more than there are
    int checksum = -1; ///< -1: the right one

    void write(vSTREAM& stream) const
    {
        byte_writer out;
        out.u32le(0xC6D3D0C5);
        out.u32le(header_size);
        out.u32le(static_cast<std::uint32_t>(postscript.size()));
        out.u32le(0);
        out.u32le(0);
        out.u32le(tiff.empty() ? 0 : header_size + static_cast<std::uint32_t>(postscript.size()));
        out.u32le(static_cast<std::uint32_t>(tiff.size()) + promised_tiff);
        std::uint16_t sum = 0;
        byte_reader words(out.span());
        while (!words.at_end())
            sum = static_cast<std::uint16_t>(sum ^ words.u16le());
        out.u16le(checksum < 0 ? sum : static_cast<std::uint16_t>(checksum));
        out.text(postscript);
        out.bytes(tiff);
        stream.WritePlain(out.data(), static_cast<std::uint32_t>(out.size()));
        stream.MoveFromStart(0);
    }
};

std::string contents_of(vMEMSTREAM& stream)
{
    std::string contents(stream.Size(), '\0');
    stream.MoveFromStart(0);
    stream.ReadPlain(reinterpret_cast<std::uint8_t*>(contents.data()), stream.Size());
    return contents;
}

TEST(EpsFilter, RecognisesPlainPostScriptByItsComments)
{
    using namespace std::string_literals;
    const std::string long_comment = "%" + std::string(255, 'x');
    const struct {
        const char* what;
        std::string contents;
        bool mine;
    } cases[] = {
        {"line feeds", "%!PS-Adobe-2.0\n%%BoundingBox: 0 0 1 1\n", true},
        {"carriage returns", "%!PS-Adobe-2.0\r%%Title: x\r%%BoundingBox: 0 0 1 1\r", true},
        {"zero bytes between", "%!PS-\0Adobe-2.0\n%%Bound\0ingBox:\n"s, true},
        {"the longest line", "%!PS-Adobe-2.0\n" + long_comment + "\n%%BoundingBox:\n", true},
        {"a longer line", "%!PS-Adobe-2.0\n" + long_comment + "x\n%%BoundingBox:\n", false},
        {"bounds after a line that is no comment", "%!PS-Adobe-2.0\n\n%%BoundingBox: 0 0 1 1\n", false},
        {"bounds whose line does not end", "%!PS-Adobe-2.0\n%%BoundingBox: 0 0 1 1", false},
        {"no bounds", "%!PS-Adobe-2.0\n%%Title: x\n", false},
        {"another first line", "%!PS\n%%BoundingBox: 0 0 1 1\n", false},
        {"nothing", "", false},
    };
    for (const auto& c : cases) {
        vMEMSTREAM stream;
        stream.WritePlain(reinterpret_cast<const std::uint8_t*>(c.contents.data()),
            static_cast<std::uint32_t>(c.contents.size()));
        EPSFILTER filter;
        EXPECT_EQ(filter.CheckStream(stream), c.mine ? oFILTER_RECOGNISED : oFILTER_FAILED) << c.what;
        EXPECT_EQ(filter.LastStatus(), c.mine ? oFILTER_OK : oFILTER_FAILED) << c.what;

        vMEMSTREAM out;
        oMEMDIB preview;
        EXPECT_EQ(filter.Convert(stream, out), c.mine ? oFILTER_OK : oFILTER_FAILED) << c.what;
        EXPECT_EQ(contents_of(out), c.mine ? c.contents : std::string()) << c.what;
        EXPECT_EQ(filter.Convert(stream, preview), oFILTER_FAILED) << c.what;
    }
}

TEST(EpsFilter, YieldsTextAndPreviewOfABinaryFile)
{
    vMEMSTREAM stream;
    dos_eps().write(stream);
    EPSFILTER filter;
    EXPECT_EQ(filter.CheckStream(stream), oFILTER_RECOGNISED);
    vMEMSTREAM out;
    EXPECT_EQ(filter.Convert(stream, out), oFILTER_OK);
    EXPECT_EQ(contents_of(out), text);
    oMEMDIB preview;
    EXPECT_EQ(filter.Convert(stream, preview), oFILTER_OK);
    EXPECT_EQ(test::colours_of(preview),
        (std::vector<std::vector<int>>{{0x010101, 0x020202}, {0x030303, 0xFAFAFA}}));
}

/// What is no preview to the own decoder goes to the imaging module, whose answer stands.
using EpsFilterWithTheImagingModule = test::imaging_test;

TEST_F(EpsFilterWithTheImagingModule, ChecksTheBinaryHeader)
{
    const struct {
        const char* what;
        dos_eps file;
        oFILTER_STATUS recognised, converted, preview;
    } cases[] = {
        {"no checksum", {.checksum = 0xFFFF}, oFILTER_RECOGNISED, oFILTER_OK, oFILTER_OK},
        {"wrong checksum", {.checksum = 1}, oFILTER_FAILED, oFILTER_FAILED, oFILTER_FAILED},
        {"no preview", {.tiff = {}}, oFILTER_RECOGNISED, oFILTER_OK, oFILTER_FAILED},
        {"preview past the end", {.promised_tiff = 1}, oFILTER_RECOGNISED, oFILTER_OK, oFILTER_FAILED},
        {"preview of 4 GiB", {.promised_tiff = 0xFFFF0000}, oFILTER_RECOGNISED, oFILTER_OK, oFILTER_FAILED},
        {"preview that is none", {.tiff = {1, 2, 3}}, oFILTER_RECOGNISED, oFILTER_OK, oFILTER_UNSUPPORTED},
        {"text that is none", {.postscript = "%!PS\n"}, oFILTER_RECOGNISED, oFILTER_FAILED, oFILTER_OK},
    };
    for (const auto& c : cases) {
        vMEMSTREAM stream, out;
        c.file.write(stream);
        EPSFILTER filter;
        oMEMDIB preview;
        EXPECT_EQ(filter.CheckStream(stream), c.recognised) << c.what;
        EXPECT_EQ(filter.Convert(stream, out), c.converted) << c.what;
        EXPECT_EQ(filter.Convert(stream, preview), c.preview) << c.what;
    }
    EPSFILTER filter;
    EXPECT_EQ(filter.Type(), oFILTER_POSTSCRIPT);
    EXPECT_FALSE(filter.DoesExport());
}

} // namespace
} // namespace klv
