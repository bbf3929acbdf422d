#include "klv/base/memory.h"
#include "klv/geometry/primitive_shapes.h"

#include "tests/attributes/stream_form.h"
#include "tests/geometry/shape_text.h"

#include <memory>

#include <gtest/gtest.h>

using namespace klv;

namespace {

// Box (-1, 2, 7, 9), 2 points in room for 100, open.
const byte_vector two_points{0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 7, 0, 0, 0, 9, 0, 0, 0, //
    2, 0, 100, 0, 0, 0, 0, 0, //
    0xFF, 0xFF, 0xFF, 0xFF, 9, 0, 0, 0, 9, //
    7, 0, 0, 0, 2, 0, 0, 0, 2};

// The capacity that a shape tells streams.
int stored_capacity(const vSHAPE& shape)
{
    const byte_vector form = stream_form(shape);
    return form[18] | form[19] << 8;
}

} // namespace

TEST(ShapeStream, Form)
{
    vSHAPE shape = append({{{-1, 9}, 9}, {{7, 2}, 2}});
    EXPECT_EQ(stream_form(shape), two_points);

    byte_vector empty(24, 0);
    empty[18] = 100;
    empty[20] = 1;
    EXPECT_EQ(stream_form(vSHAPE()), empty);
}

TEST(ShapeStream, CapacityGrowsInSteps)
{
    const vPOINT points[]{{0, 0}, {1, 1}, {2, 0}};
    vSHAPE shape(3, points);
    EXPECT_EQ(stored_capacity(shape), 3);
    shape.AppendPoint({{0, 0}, 9});
    EXPECT_EQ(stored_capacity(shape), 103);
    shape.DeletePoint(3);
    EXPECT_EQ(stored_capacity(shape), 103);
    shape.AddShape(vRECTSHAPE(vRECT(0, 0, 1, 1)));
    EXPECT_EQ(stored_capacity(shape), 7);
    EXPECT_EQ(stored_capacity(vSHAPE(vSHAPE(3, points))), 3);
    EXPECT_EQ(stored_capacity(vELPSSHAPE(vRECT(0, 0, 9, 9))), 12);

    vSHAPE large;
    for (int i = 0; i < 65535; ++i)
        large.AppendPoint({{i, 0}, static_cast<std::uint8_t>(i == 0 ? 9 : 8)});
    EXPECT_EQ(stored_capacity(large), 65535);
}

TEST(ShapeStream, SharesTheBytesOfAMemoryStreamUntilItsFirstChange)
{
    byte_vector data{0xAA}; // so that the records lie at an odd address
    data.insert(data.end(), two_points.begin(), two_points.end());
    data.push_back(0xBB);
    loaded_stream stream(data);
    stream.ReadUByte();
    vSHAPE shape(stream);
    EXPECT_TRUE(shape.borrowed());
    EXPECT_EQ(text_of(shape), "-1,9:9 7,2:2");
    EXPECT_EQ(shape.BoundBox(), vRECT(-1, 2, 7, 9));
    EXPECT_EQ(shape.Closed(), 0);
    EXPECT_EQ(stream.ReadUByte(), 0xBB);
    EXPECT_EQ(stream.WriteUByte(1), 0) << "the stream is locked meanwhile";

    const vSHAPE copy = shape;
    EXPECT_FALSE(copy.borrowed());
    EXPECT_EQ(shape.Rescale({65536, 65536}), 0);
    EXPECT_EQ(shape.Rotate({0, 0}, 90, 1), 0);

    shape.AppendPoint({{1, 1}, 9});
    EXPECT_FALSE(shape.borrowed());
    EXPECT_EQ(stored_capacity(shape), 100);
    EXPECT_EQ(text_of(shape), "-1,9:9 7,2:2 1,1:9");
    EXPECT_EQ(stream.WriteUByte(1), 1);
}

TEST(ShapeStream, EveryChangeTakesAPrivateCopy)
{
    const auto after = [](auto&& change) {
        loaded_stream stream(two_points);
        vSHAPE shape(stream);
        change(shape);
        EXPECT_FALSE(shape.borrowed());
        EXPECT_EQ(contents(stream), two_points);
        return text_of(shape);
    };
    EXPECT_EQ(after([](vSHAPE& s) { s.Translate(1, 1); }), "0,10:9 8,3:2");
    EXPECT_EQ(after([](vSHAPE& s) { s.CloseAllContours(1); }), "-1,9:9 7,2:10");
    EXPECT_EQ(after([](vSHAPE& s) { s.DeletePoint(0); }), "7,2:2");
    EXPECT_EQ(after([](vSHAPE& s) { s.InsertPoint(1, {{0, 0}, 8}); }), "-1,9:9 0,0:8 7,2:2");
    EXPECT_EQ(after([](vSHAPE& s) { s.AddShape(s); }), "-1,9:9 7,2:2 -1,9:9 7,2:2");
    EXPECT_EQ(
        after([](vSHAPE& s) { s.map_points([](const vPOINT& p) { return p + p; }); }), "-2,18:9 14,4:2");
    EXPECT_EQ(after([](vSHAPE& s) { s.clear(); }), "");
}

TEST(ShapeStream, ReadsIntoAnExistingShape)
{
    vSHAPE shape = vELPSSHAPE(vRECT(0, 0, 50, 50));
    loaded_stream stream(two_points);
    shape << stream;
    EXPECT_FALSE(shape.borrowed());
    EXPECT_EQ(stream_form(shape), two_points);
}

TEST(ShapeStream, CompressedRecordsAreTakenOutOfTheirFrame)
{
    std::vector<vPOINT> points;
    for (int i = 0; i < 500; ++i)
        points.emplace_back(i % 7, i % 3);
    vSHAPE shape;
    shape.assign_polyline(points, 1);
    vMEMSTREAM stream;
    stream.Compress(1);
    stream << shape << std::uint16_t{0x1234};
    ASSERT_LT(stream.Size(), 24u + 500 * 9);
    stream.MoveFromStart(0);
    const vSHAPE read(stream);
    EXPECT_FALSE(read.borrowed());
    EXPECT_EQ(text_of(read), text_of(shape));
    EXPECT_EQ(stream.ReadUWord(), 0x1234);
}

TEST(ShapeStream, StreamsThatEndEarly)
{
    for (std::size_t size = 0; size < two_points.size(); ++size) {
        loaded_stream stream(byte_vector(two_points.begin(), two_points.begin() + static_cast<int>(size)));
        const vSHAPE shape(stream);
        EXPECT_LE(shape.NoPoint(), size < 33 ? 0 : 1) << size;
        EXPECT_FALSE(shape.borrowed());
        EXPECT_EQ(stream.Status(), vSTREAM_END) << size;
    }
}
