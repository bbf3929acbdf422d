#include "klv/core/memory.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/filters/wmf/wmf_filter.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"
#include "tests/filters/wmf_drawing.h"
#include "tools/klv/failure.h"
#include "tools/klv/render.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

// Memory runs out at every point of a conversion: WMF, recorded picture, pixels, PNG.

namespace klv {
namespace {

using bytes = std::vector<std::uint8_t>;

// The PNG, or nothing when the conversion said that it failed.
std::optional<bytes> convert(bytes file)
{
    std::uint8_t* data = file.data();
    vMEMSTREAM in(&data, static_cast<std::uint32_t>(file.size()), vSTRING("sweep.wmf"), 0);
    vMETAFILE picture;
    WMFFILTER reader;
    reader.ReadingLevel(oREADING_LEVEL::faithful);
    if (reader.Convert(in, &picture) != oFILTER_OK)
        return std::nullopt;
    try {
        const auto bitmap = tool::render(picture, {.width = 40, .antialias = 2});
        vMEMSTREAM out;
        PNGFILTER writer;
        if (writer.Convert(*bitmap, out) != oFILTER_OK)
            return std::nullopt;
        bytes written(out.Size());
        out.MoveFromStart(0);
        out.ReadPlain(written.data(), out.Size());
        return written;
    } catch (const tool::failure&) {
        return std::nullopt;
    }
}

class AllocationSweep : public test::imaging_test { };

// Every allocation of the start, then ever sparser ones.
std::uint64_t following(std::uint64_t n) { return n < 300 ? n + 1 : n + n / 60; }

TEST_F(AllocationSweep, EveryConversionEndsWithAnAnswer)
{
    const bytes file = test::drawing_of_everything();
    const auto whole = convert(file); // also fills the caches of fonts and patterns
    ASSERT_TRUE(whole);
    const std::uint64_t before = vMemAllocations();
    ASSERT_EQ(convert(file), whole);
    const std::uint64_t allocations = vMemAllocations() - before;

    for (const auto kind : {memory_failure::once, memory_failure::from_then_on}) {
        int failed = 0;
        for (std::uint64_t n = 0; n < allocations; n = following(n)) {
            vMemFailAfter(n, kind);
            failed += !convert(file);
            vMemNeverFail();
        }
        EXPECT_GT(failed, 0);
        // Nothing that ran out stays behind.
        EXPECT_EQ(convert(file), whole);
    }
    vMemFailAfter(allocations, memory_failure::from_then_on);
    EXPECT_EQ(convert(file), whole);
    vMemNeverFail();
}

} // namespace
} // namespace klv
