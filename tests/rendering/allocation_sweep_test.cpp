#include "klv/base/memory.h"
#include "klv/rendering/document.h"
#include "klv/rendering/save.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/imaging.h"
#include "tests/filters/wmf_drawing.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

// Memory runs out at every point of a conversion: WMF, recorded picture, pixels, PNG.

namespace klv {
namespace {

using bytes = std::vector<std::uint8_t>;

// The PNG and the pixels on a clear ground, or nothing when the conversion said that it failed.
std::optional<bytes> convert(const bytes& file)
{
    document opened;
    if (!open_bytes(file, opened, "sweep.wmf").ok() || !opened.warning.Null())
        return std::nullopt;
    vMEMSTREAM out;
    if (!save(opened, out, {.format = "png", .depth = {}, .render = {.width = 40, .samples = 2}}).ok())
        return std::nullopt;
    bytes made(out.Size());
    out.MoveFromStart(0);
    out.ReadPlain(made.data(), out.Size());
    rendered_image image;
    if (!render(opened, {.width = 20, .samples = 1, .ground = {}}, image).ok())
        return std::nullopt;
    made.insert(made.end(), image.bytes().begin(), image.bytes().end());
    return made;
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
