#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "filters/arc.h"
#include "geometry/primitive_shapes.h"
#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/sink.h"

// The demonstration picture: one page, recorded through the drawing interface as an application would.

namespace klv::tool {
namespace {

// The page is 200 by 150 mm in units of 0.01 mm.
constexpr int page_width = 20000;
constexpr int page_height = 15000;
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

// The kinds of fill, each in its own frame of a row.
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
    constexpr int frame = 2600;
    constexpr int step = 3100;
    int left = 900;
    for (const auto& s : samples) {
        picture.LineSpec(line(vLINE_SOLID, ink, 40));
        picture.FillSpec(s.spec);
        picture.DrawShape(vROUNDRECTSHAPE(vRECT(vPOINT(left, top), frame, frame), vSIZE(700, 700)));
        text(picture, s.name, left + 100, top + frame + 550, 420, ink);
        left += step;
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
        const double y = std::sin(t * 6 * std::numbers::pi) * 500 + std::sin(t * 26 * std::numbers::pi) * 180;
        points[i] = vPOINT(left + static_cast<int>(t * 18200), middle + static_cast<int>(y));
    }
    picture.LineSpec(line(vLINE_SOLID, red, 50));
    picture.DrawLine(std::span<const vPOINT>(points));
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
    text(picture, "recorded once, drawn at any size", 900, 14200, 620, red, vFONT_BOLD_ITALIC);

    picture.LogicalExtents(0, page_width, 0, page_height);
    picture.EndMetaFile();
}

} // namespace

int demo(const std::string& output, const render_options& how)
{
    const std::string reason = reason_of_failure([&] {
        vMETAFILE picture;
        record_demo(picture);
        const std::string format = output == "-" ? "PNG" : extension_of(output);
        if (format == "VMM")
            write_picture(picture, output);
        else
            write_bitmap(*render(picture, how), format, output);
    });
    if (reason.empty())
        return 0;
    print_failure(output, reason);
    return 1;
}

} // namespace klv::tool
