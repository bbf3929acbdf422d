#include "klv/base/memory.h"
#include "klv/geometry/matrix.h"
#include "klv/geometry/primitive_shapes.h"

#include "tests/attributes/stream_form.h"
#include "tests/geometry/shape_text.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

using namespace klv;

namespace {

struct operation {
    const char* name;
    vSHAPE shape;
    std::function<int(vSHAPE&)> run;
};

std::vector<operation> operations()
{
    vSHAPE hollow = vRECTSHAPE(vRECT(0, 0, 1000, 1000));
    hollow.AddShape(vRECTSHAPE(vRECT(300, 300, 600, 600)));
    const vELPSSHAPE disc(vRECT(500, 500, 1500, 1200));
    vSHAPE around(disc);
    around.Negate();
    std::vector<vPOINT> ring;
    for (int i = 0; i < 60; ++i)
        ring.emplace_back(
            static_cast<int>(1000 * std::cos(i * 0.1)), static_cast<int>(1000 * std::sin(i * 0.1)));
    const vSHAPE polygon(60, ring.data());
    const vSHAPE open = polyline({{0, 0}, {100, 0}, {100, 100}}, 0);
    return {
        {"Union", hollow, [=](vSHAPE& s) { return s.Union(disc); }},
        {"Union with a complement", hollow, [=](vSHAPE& s) { return s.Union(around); }},
        {"Intersection", hollow, [=](vSHAPE& s) { return s.Intersection(disc); }},
        {"Intersection with a complement", hollow, [=](vSHAPE& s) { return s.Intersection(around); }},
        {"Negate", disc,
            [](vSHAPE& s) {
                s.Negate();
                return static_cast<int>(s.negated());
            }},
        {"Shrink", hollow, [](vSHAPE& s) { return s.Shrink(50, 0); }},
        {"growing a curve", disc, [](vSHAPE& s) { return s.Shrink(-50, 1); }},
        {"Expand", polygon, [](vSHAPE& s) { return s.Expand(5, 5); }},
        {"Smooth", polygon, [](vSHAPE& s) { return s.Smooth(); }},
        {"AppendAutoCurvePoint", open,
            [](vSHAPE& s) {
                return s.AppendAutoCurvePoint({0, 100}, 1, 1);
            }},
        {"Distort", disc,
            [](vSHAPE& s) {
                oMATRIX matrix({0.5, 0, 10, 0, 2, 0});
                return s.Distort(&matrix);
            }},
    };
}

} // namespace

// Whichever allocation fails, of a shape that owns its points and of one that must take a copy of them first.
TEST(ShapeMemory, AnOperationIsDoneOrAnswersZeroAndLeavesTheShape)
{
    for (const operation& o : operations()) {
        const vSHAPE& shape = o.shape;
        const byte_vector form = stream_form(shape);
        for (const bool borrowed : {false, true}) {
            SCOPED_TRACE(std::string(o.name) + (borrowed ? ", borrowed" : ""));
            const auto attempt = [&](std::uint64_t passing, memory_failure kind) {
                loaded_stream stream(form);
                vSHAPE tried(shape);
                if (borrowed)
                    stream >> tried;
                vMemFailAfter(passing, kind);
                const std::uint64_t before = vMemAllocations();
                const int done = o.run(tried);
                const std::uint64_t allocations = vMemAllocations() - before;
                vMemNeverFail();
                return std::tuple(done, text_of(tried), allocations);
            };
            const auto [done, changed, allocations] = attempt(0, memory_failure::none);
            ASSERT_EQ(done, 1);
            ASSERT_NE(changed, text_of(shape));
            int refused = 0;
            for (const auto kind : {memory_failure::once, memory_failure::from_then_on}) {
                for (std::uint64_t n = 0; n < allocations; ++n) {
                    const auto [answer, text, used] = attempt(n, kind);
                    ASSERT_EQ(text, answer != 0 ? changed : text_of(shape)) << n;
                    refused += answer == 0;
                }
            }
            EXPECT_EQ(refused > 0, allocations > 0);
        }
    }
}
