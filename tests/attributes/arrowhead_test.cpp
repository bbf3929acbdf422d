#include "klv/attributes/line_spec.h"

#include <gtest/gtest.h>

using namespace klv;

TEST(Arrowhead, Table)
{
    EXPECT_EQ(vLINESPEC::GetNumArrowheads(), 10u);
    EXPECT_EQ(vLINESPEC::GetArrowhead(10), nullptr);
    const struct {
        bool hollow;
        int points, clip_points;
        vRECT box;
    } expected[]{
        {false, 3, 4, {0, -25, 55, 25}},
        {true, 3, 4, {0, -25, 55, 25}},
        {false, 4, 5, {0, -25, 70, 25}},
        {true, 4, 5, {0, -25, 70, 25}},
        {false, 6, 7, {0, -31, 60, 31}},
        {false, 4, 4, {0, -30, 10, 30}},
        {false, 11, 7, {0, -31, 60, 31}},
        {false, 6, 3, {0, -31, 60, 31}},
        {false, 14, 5, {0, -31, 110, 31}},
        {false, 6, 5, {0, -30, 110, 30}},
    };
    for (unsigned i = 0; i < 10; ++i) {
        const vARROWHEAD* const head = vLINESPEC::GetArrowhead(i);
        ASSERT_NE(head, nullptr);
        EXPECT_EQ(head->Hollow(), expected[i].hollow) << i;
        EXPECT_EQ(head->Outline().NoPoint(), expected[i].points) << i;
        EXPECT_EQ(head->ClipOutline().NoPoint(), expected[i].clip_points) << i;
        EXPECT_EQ(head->Outline().BoundBox(), expected[i].box) << i;
        EXPECT_EQ(head->ClipOutline().BoundBox().Left(), -10) << i;
        EXPECT_EQ(head->Outline().Closed(), 1);
        EXPECT_EQ(head->PenWidth(20), 8);
    }
}

TEST(Arrowhead, IsScaledMovedAndTurnedToTheLinesEnd)
{
    const vARROWHEAD& head = *vLINESPEC::GetArrowhead(0);
    const vPOINT end(1000, 500);
    const struct {
        vPOINT from;
        vRECT box;
    } cases[]{
        {{2000, 500}, {1000, 450, 1110, 550}}, // arrives from the right, as designed
        {{0, 500}, {890, 450, 1000, 550}},
        {{1000, 0}, {950, 390, 1050, 500}},
        {{1000, 900}, {950, 500, 1050, 610}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(head.PlacedOutline(end, c.from, 20).BoundBox(), c.box) << c.from.x << ',' << c.from.y;
    EXPECT_EQ(head.PlacedClipOutline(end, {2000, 500}, 10).BoundBox(), vRECT(990, 475, 1055, 525));
}
