#include "klv/base/types.h"

#include "tests/klv/command_line.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

// `klv shape` as a user runs it, on pictures of 200 by 100 units drawn with a pixel for 10 units.

namespace klv {
namespace {

using test::run;

using points = std::vector<POINT>;

class ShapeCommand : public test::CommandLine {
protected:
    /// Polygons without an outline, all of one colour.
    void write_picture(const std::string& name, std::initializer_list<points> polygons)
    {
        constexpr int no_pen = 5;
        auto picture = test::wmf_builder().placeable(0, 0, 200, 100, 100).window(0, 0, 200, 100);
        picture.pen(no_pen, 0, 0).brush(0, 0x0000FF).select(0).select(1);
        for (const auto& polygon : polygons) {
            test::wmf_builder::words words{static_cast<int>(polygon.size())};
            for (const auto& p : polygon)
                words.insert(words.end(), {p.x, p.y});
            picture.add(wmf_function::polygon, words);
        }
        write(name, picture.build());
    }
    test::outcome shape(const std::string& arguments) { return run("shape " + arguments); }
    std::string pixels(const std::string& name) const
    {
        const auto drawn
            = run("convert " + path(name) + " " + path("pixels.bmp") + " --width 20 --antialias 1");
        EXPECT_EQ(drawn.status, 0) << drawn.output;
        return contents("pixels.bmp");
    }
    std::string records(const std::string& name) const { return run("dump " + path(name)).output; }
    /// What the command makes of a file, which must be the same as .vmm and as pixels.
    std::string result(const std::string& command, const std::string& options = {})
    {
        const auto recorded = shape(command + " " + path("out.vmm") + options);
        EXPECT_EQ(recorded.status, 0) << recorded.output;
        EXPECT_EQ(recorded.output, "");
        const auto drawn = shape(command + " " + path("out.bmp") + options + " --width 20 --antialias 1");
        EXPECT_EQ(drawn.status, 0) << drawn.output;
        EXPECT_EQ(contents("out.bmp"), pixels("out.vmm")) << command;
        return contents("out.bmp");
    }
};

/// The page is recorded 16000 units wide.
constexpr int recorded_units = 80;

std::string distance(int units) { return " --distance " + std::to_string(units * recorded_units); }

points box(int left, int top, int right, int bottom)
{
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

TEST_F(ShapeCommand, UnitesTheShapesOfAllPictures)
{
    write_picture("two.wmf", {box(10, 10, 110, 60), box(80, 40, 180, 90)});
    EXPECT_EQ(result("union " + path("two.wmf")), pixels("two.wmf"));
    EXPECT_NE(records("out.vmm").find("8 points"), std::string::npos) << records("out.vmm");
    write_picture("one.wmf", {box(10, 10, 110, 60)});
    write_picture("other.wmf", {box(80, 40, 180, 90)});
    EXPECT_EQ(result("union " + path("one.wmf") + " " + path("other.wmf")), pixels("two.wmf"));
    EXPECT_EQ(result("union - <" + path("two.wmf")), pixels("two.wmf"));
}

TEST_F(ShapeCommand, IntersectsShapesOfOnePictureOrTheAreasOfSeveral)
{
    write_picture("two.wmf", {box(10, 10, 110, 60), box(80, 40, 180, 90)});
    write_picture("common.wmf", {box(80, 40, 110, 60)});
    EXPECT_EQ(result("intersect " + path("two.wmf")), pixels("common.wmf"));
    write_picture("bar.wmf", {box(0, 50, 200, 60)});
    write_picture("strip.wmf", {box(10, 50, 180, 60)});
    EXPECT_EQ(result("intersect " + path("bar.wmf") + " " + path("two.wmf")), pixels("strip.wmf"));
    write_picture("apart.wmf", {box(0, 0, 20, 20), box(50, 50, 90, 90)});
    write_picture("nothing.wmf", {});
    EXPECT_EQ(result("intersect " + path("apart.wmf")), pixels("nothing.wmf"));
}

TEST_F(ShapeCommand, OffsetMovesEachOutline)
{
    write_picture("box.wmf", {box(50, 30, 130, 70)});
    write_picture("grown.wmf", {box(30, 10, 150, 90)});
    write_picture("shrunk.wmf", {box(60, 40, 120, 60)});
    write_picture("nothing.wmf", {});
    EXPECT_EQ(result("offset " + path("box.wmf"), distance(20)), pixels("grown.wmf"));
    EXPECT_EQ(result("offset " + path("box.wmf"), distance(-10)), pixels("shrunk.wmf"));
    EXPECT_EQ(result("offset " + path("box.wmf"), distance(0)), pixels("box.wmf"));
    for (const auto& far : {distance(-20), std::string(" --distance -1073741824")})
        EXPECT_EQ(result("offset " + path("box.wmf"), far), pixels("nothing.wmf"));
    write_picture("spike.wmf", {{{50, 30}, {150, 50}, {50, 70}}});
    EXPECT_NE(result("offset " + path("spike.wmf"), distance(10)),
        result("offset " + path("spike.wmf"), distance(10) + " --bevel"));
}

TEST_F(ShapeCommand, SmoothFitsCurvesWithinTheErrorsAskedFor)
{
    points wave;
    for (int x = 10; x <= 190; x += 10)
        wave.push_back({x, 20 + (x / 10 % 4 < 2 ? 0 : 3)});
    wave.insert(wave.end(), {{190, 90}, {10, 90}});
    write_picture("wave.wmf", {wave});
    const auto curves = [&] {
        const std::string text = records("out.vmm");
        std::size_t count = 0, at = 0;
        while ((at = text.find(" C ", at) + 1) != 0)
            ++count;
        return count;
    };
    result("smooth " + path("wave.wmf"), " --mean-error 0 --greatest-error 0");
    EXPECT_EQ(curves(), 0u) << records("out.vmm");
    result("smooth " + path("wave.wmf"), " --mean-error 40000 --greatest-error 160000");
    const std::size_t few = curves();
    EXPECT_GT(few, 0u) << records("out.vmm");
    EXPECT_LT(few, 5u) << records("out.vmm");
    write_picture("short.wmf", {box(50, 30, 130, 70)});
    EXPECT_EQ(result("smooth " + path("short.wmf")), pixels("short.wmf")) << "too few points for curves";
}

TEST_F(ShapeCommand, MisuseIsStatusTwo)
{
    for (const char* arguments :
        {"", "nonsense a b", "union", "union a", "offset a b", "offset a --distance 5",
            "offset a b --distance x", "offset a b --distance 99999999999", "offset a b c --distance 5",
            "smooth a b --mean-error -1", "smooth a b c", "intersect a b --distance 5"})
        EXPECT_EQ(shape(arguments).status, 2) << arguments;
}

TEST_F(ShapeCommand, WhatCannotBeDoneCostsOneLineAndStatusOne)
{
    write_picture("empty.wmf", {});
    write_picture("box.wmf", {box(50, 30, 130, 70)});
    write("noise.wmf", std::vector<std::uint8_t>(5000, 0x5A));
    ASSERT_EQ(run("convert " + path("box.wmf") + " " + path("image.png")).status, 0);
    const struct {
        std::string arguments, blamed;
    } cases[] = {
        {"union " + path("missing.wmf") + " " + path("out.png"), "missing.wmf"},
        {"union " + path("noise.wmf") + " " + path("out.png"), "noise.wmf"},
        {"union " + path("empty.wmf") + " " + path("out.png"), "empty.wmf: has no closed shapes"},
        {"intersect " + path("box.wmf") + " " + path("empty.wmf") + " " + path("out.png"), "empty.wmf"},
        {"smooth " + path("image.png") + " " + path("out.png"), "image.png"},
        {"union " + path("box.wmf") + " " + path("out.xyz"), "out.xyz"},
        {"union " + path("box.wmf") + " " + path("none/out.vmm"), "none/out.vmm"},
    };
    for (const auto& c : cases) {
        const auto failed = shape(c.arguments);
        EXPECT_EQ(failed.status, 1) << c.arguments;
        EXPECT_NE(failed.output.find(c.blamed), std::string::npos) << failed.output;
        EXPECT_EQ(std::count(failed.output.begin(), failed.output.end(), '\n'), 1) << failed.output;
        EXPECT_FALSE(std::filesystem::exists(path("out.png")));
    }
    // What has no closed shapes stays as it is where each shape is changed by itself.
    EXPECT_EQ(result("offset " + path("empty.wmf"), distance(5)), pixels("empty.wmf"));
}

} // namespace
} // namespace klv
