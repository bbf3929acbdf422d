#include "klv/base/angles.h"
#include "klv/geometry/arc.h"
#include "klv/geometry/primitive_shapes.h"

#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/output.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

// The demonstration picture: one page, recorded through the drawing interface as an application would.

namespace klv::tool {
namespace {

// The page is 200 by 190 mm in units of 0.01 mm.
constexpr int page_width = 20000;
constexpr int page_height = 19000;
constexpr int micrometres_per_unit = 10;

const vCOLOUR black(0, 0, 0);
const vCOLOUR ink(40, 44, 60);
const vCOLOUR red(200, 40, 40);
const vCOLOUR gold(250, 200, 60);
const vCOLOUR sea(30, 110, 160);
const vCOLOUR sky(190, 225, 245);
const vCOLOUR leaf(60, 140, 70);

vLINESPEC line(vLINETYPE type, const vCOLOUR& colour, int width)
{
    return vLINESPEC(
        type, colour, width, vCORNER_ROUND, vDASH_ROUND, nullptr, vLINESPEC::no_arrow, vLINESPEC::no_arrow);
}

vFILLSPEC fill(vFILLTYPE type, const vCOLOUR& from, const vCOLOUR& to, short angle = 0)
{
    return vFILLSPEC(type, from, to, vANGLE(angle), vFILL_ALTERNATE, vPOINT(0, 0));
}

void text(vMETAFILE& picture, const char* words, int x, int y, int height, const vCOLOUR& colour,
    vFONTSTYLE style = vFONT_NORMAL)
{
    picture.FillSpec(fill(vFILL_SOLID, colour, colour));
    picture.FontSpec(
        vFONTSPEC(vSTRING("Arial"), style, height, vREAL(), 100, vFONT_CHARACTER_HEIGHT, vANGLE()));
    picture.DrawTextOnLine(vSTRING(words), vPOINT(x, y), nullptr);
}

// A row of samples, each with its name below it.
constexpr int sample_size = 2600;
constexpr int sample_step = 3100;

void name_sample(vMETAFILE& picture, const char* name, int left, int top)
{
    text(picture, name, left + 100, top + sample_size + 550, 420, ink);
}

// The kinds of fill, each in its own frame.
void draw_fills(vMETAFILE& picture, int top)
{
    struct sample {
        const char* name;
        vFILLSPEC spec;
    };
    const std::array samples{sample{"solid", fill(vFILL_SOLID, gold, gold)},
        sample{"linear", fill(vFILL_LINEAR, sea, sky, 90)},
        sample{"two-way", fill(vFILL_LINEAR_TWO_WAY, red, gold, 45)},
        sample{"radial", fill(vFILL_RADIAL, sky, sea)},
        sample{"quadratic", fill(vFILL_RADIAL_QUADRATIC, gold, red)},
        sample{"box", fill(vFILL_BOX, leaf, sky)}};
    int left = 900;
    for (const auto& s : samples) {
        picture.LineSpec(line(vLINE_SOLID, ink, 40));
        picture.FillSpec(s.spec);
        picture.DrawShape(
            vROUNDRECTSHAPE(vRECT(vPOINT(left, top), sample_size, sample_size), vSIZE(700, 700)));
        name_sample(picture, s.name, left, top);
        left += sample_step;
    }
}

void draw_lines(vMETAFILE& picture, int left, int top)
{
    constexpr std::array types{vLINE_SOLID, vLINE_DOT, vLINE_DASH, vLINE_DASH_DOT, vLINE_DASH_DOT_DOT};
    constexpr int step = 700;
    int y = top;
    for (std::size_t i = 0; i < types.size(); ++i, y += step) {
        picture.LineSpec(line(types[i], sea, 60 + 20 * static_cast<int>(i)));
        picture.DrawLine(2, vPOINT(left, y), vPOINT(left + 5000, y));
    }
}

void draw_shapes(vMETAFILE& picture, int left, int top)
{
    picture.LineSpec(line(vLINE_SOLID, ink, 60));
    picture.FillSpec(fill(vFILL_LINEAR, gold, red, 270));
    picture.DrawShape(vSTARSHAPE(vRECT(vPOINT(left, top), 3600, 3600), 5, 0, 42, 0, 0));
    picture.FillSpec(fill(vFILL_SOLID, leaf, leaf));
    picture.DrawShape(vPOLYGONSHAPE(vRECT(vPOINT(left + 4200, top), 3000, 3600), 6, 1));

    vSHAPE pie;
    picture.FillSpec(fill(vFILL_RADIAL, sky, sea));
    ArcToBez(vPOINT(left + 9300, top + 1800), vPOINT(1800, 0), vPOINT(0, 1800), vPOINT(10, -10),
        vPOINT(0, -10), pie, ARC_PIE);
    picture.DrawShape(pie);
}

// A curve that two sines make, drawn as one open outline of many points.
void draw_wave(vMETAFILE& picture, int left, int middle)
{
    std::array<vPOINT, 300> points;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double t = static_cast<double>(i) / points.size();
        const double y = std::sin(t * 6 * pi) * 500 + std::sin(t * 26 * pi) * 180;
        points[i] = vPOINT(left + static_cast<int>(t * 18200), middle + static_cast<int>(y));
    }
    picture.LineSpec(line(vLINE_SOLID, red, 50));
    picture.DrawLine(std::span<const vPOINT>(points));
}

vSHAPE placed(vSHAPE shape, int left, int top)
{
    shape.Translate(left, top);
    return shape;
}

void draw_area(vMETAFILE& picture, const vSHAPE& shape, const vCOLOUR& colour)
{
    picture.LineSpec(line(vLINE_SOLID, ink, 40));
    picture.FillSpec(fill(vFILL_SOLID, colour, colour));
    picture.DrawShape(shape);
}

void draw_outline(vMETAFILE& picture, const vSHAPE& shape)
{
    picture.LineSpec(line(vLINE_SOLID, ink, 15));
    picture.FillSpec(fill(vFILL_NONE, black, black));
    picture.DrawShape(shape);
}

// What a box and a star make of each other, below their outlines.
void draw_combinations(vMETAFILE& picture, int left, int top)
{
    const vRECTSHAPE box(vRECT(0, 150, 1650, 1800));
    const vSTARSHAPE star(vRECT(700, 700, 2600, 2600), 6, 0, 55, 0, 0);
    vSHAPE both(box), common(box), rest(box), around(star);
    both.Union(star);
    common.Intersection(star);
    around.Negate();
    rest.Intersection(around);
    for (const auto& [name, result] :
        {std::pair("union", &both), {"intersection", &common}, {"difference", &rest}}) {
        draw_area(picture, placed(*result, left, top), gold);
        draw_outline(picture, placed(box, left, top));
        draw_outline(picture, placed(star, left, top));
        name_sample(picture, name, left, top);
        left += sample_step;
    }
}

// A shape moved inwards step by step, like the contour lines of a map.
void draw_offsets(vMETAFILE& picture, const vSHAPE& shape, int least_distance)
{
    constexpr int step = 150;
    const std::array colours{sky, vCOLOUR(150, 196, 224), vCOLOUR(110, 168, 202), vCOLOUR(70, 139, 181), sea};
    int distance = least_distance;
    for (const auto& colour : colours) {
        vSHAPE moved(shape);
        moved.Shrink(distance, 0);
        draw_area(picture, moved, colour);
        distance += step;
    }
}

// A shaky outline, and the curves fitted to it with the points where they meet.
void draw_smoothed(vMETAFILE& picture, int left, int top)
{
    constexpr double middle = 0.5 * sample_size;
    constexpr int shake = 30;
    std::array<vPOINT, 41> points;
    for (std::size_t i = 0; i < points.size(); ++i) { // the last is the first
        const double angle = static_cast<double>(i) / (points.size() - 1) * 2 * pi;
        const double r = 1080 - 170 * std::sin(3 * angle) + (i % 2 == 0 ? shake : -shake);
        points[i] = vPOINT(left + static_cast<int>(middle + r * std::cos(angle)),
            top + static_cast<int>(middle + r * std::sin(angle)));
    }
    vSHAPE outline;
    outline.assign_polyline(points, 1);
    vSHAPE smooth(outline);
    smooth.Smooth(2 * shake * shake, 4 * shake * shake);
    draw_area(picture, smooth, leaf);
    draw_outline(picture, outline);
    for (const auto& record : smooth.records()) {
        constexpr int dot = 70;
        const vPOINT p = record.point();
        if (!record.has(point_flags::control))
            draw_area(picture, vELPSSHAPE(vRECT(p.x - dot, p.y - dot, p.x + dot, p.y + dot)), gold);
    }
    name_sample(picture, "smoothed", left, top);
}

// The algebra of areas.
void draw_areas(vMETAFILE& picture, int left, int top)
{
    draw_combinations(picture, left, top);
    left += 3 * sample_step;
    draw_offsets(picture, vSTARSHAPE(vRECT(vPOINT(left, top), sample_size, sample_size), 5, 0, 55, 0, 0), 0);
    name_sample(picture, "shrunk", left, top);

    left += sample_step;
    constexpr std::array letter_c{vPOINT(600, 600), vPOINT(2000, 600), vPOINT(2000, 1100), vPOINT(1700, 1100),
        vPOINT(1700, 900), vPOINT(900, 900), vPOINT(900, 1700), vPOINT(1700, 1700), vPOINT(1700, 1500),
        vPOINT(2000, 1500), vPOINT(2000, 2000), vPOINT(600, 2000)};
    vSHAPE hook;
    hook.assign_polyline(letter_c, 1);
    draw_offsets(picture, placed(hook, left, top), -600);
    name_sample(picture, "grown", left, top);
    draw_smoothed(picture, left + sample_step, top);
}

void record_demo(vMETAFILE& picture)
{
    picture.PhysicalExtents(page_width * micrometres_per_unit, page_height * micrometres_per_unit);
    picture.LineSpec(line(vLINE_NONE, black, 0));
    picture.FillSpec(fill(vFILL_LINEAR, vCOLOUR(255, 255, 255), vCOLOUR(236, 240, 246), 90));
    picture.DrawRect(vRECT(0, 0, page_width, page_height));

    text(picture, "KLV006", 850, 1700, 1300, sea, vFONT_BOLD);
    text(
        picture, "one object model for vector drawing and raster images", 7000, 1650, 480, ink, vFONT_ITALIC);
    draw_fills(picture, 2500);
    draw_wave(picture, 900, 6900);
    draw_lines(picture, 900, 8700);
    draw_shapes(picture, 7200, 8300);
    text(picture, "lines with round dashes", 900, 12900, 420, ink);
    text(picture, "stars, polygons and arcs: bezier shapes", 7200, 12900, 420, ink);
    draw_areas(picture, 900, 13800);
    text(picture, "recorded once, drawn at any size", 900, 18300, 620, red, vFONT_BOLD_ITALIC);

    picture.LogicalExtents(0, page_width, 0, page_height);
    picture.EndMetaFile();
}

} // namespace

int demo(const std::string& output, const render_options& how)
{
    const std::string reason = reason_of_failure([&] {
        vMETAFILE picture;
        record_demo(picture);
        write_output(picture, output, {.format = {}, .depth = {}, .input = {}, .render = how});
    });
    if (reason.empty())
        return 0;
    print_failure(output, reason);
    return 1;
}

} // namespace klv::tool
