#include "klv/gdi/sink/sink.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/text/text_line.h"

#include "tests/gdi/raster_canvas.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

using namespace gdi;

std::ostream& operator<<(std::ostream& out, POINT p) { return out << p.x << ',' << p.y; }
std::ostream& operator<<(std::ostream& out, const RECT& r)
{
    return out << r.left << ',' << r.top << ',' << r.right << ',' << r.bottom;
}
std::ostream& operator<<(std::ostream& out, const block& b)
{
    return out << b.x << ',' << b.y << '+' << b.width << 'x' << b.height;
}
std::ostream& operator<<(std::ostream& out, std::span<const POINT> points)
{
    for (const POINT& p : points)
        out << ' ' << p;
    return out;
}

/// Writes down every call that it hears and has no pixels.
class listening_sink final : public sink {
public:
    explicit listening_sink(std::vector<std::string>& heard)
        : heard_(heard)
    {
    }

    UINT type() const override { return OBJ_METADC; }
    INT capability(const drawing_state&, INT index) override { return index == TECHNOLOGY ? DT_METAFILE : 0; }
    const region& visible(const drawing_state& state) override
    {
        visible_ = region(box{-1000, -1000, 1000, 1000});
        if (state.clipped)
            visible_.intersect(visible_, state.clip);
        return visible_;
    }
    const surface* pixels(const drawing_state&) override { return nullptr; }
    surface format(const drawing_state&) override
    {
        surface s;
        s.bits = 24;
        return s;
    }
    rgb nearest(const drawing_state&, rgb colour) override { return colour & 0xF0F0F0; }
    COLORREF get_pixel(const drawing_state&, POINT at) override
    {
        write_line("get_pixel ", at);
        return CLR_INVALID;
    }

    void set(const drawing_state&, setting what, std::span<const std::int32_t> numbers) override
    {
        std::ostringstream text;
        text << "set " << static_cast<int>(what);
        for (const std::int32_t n : numbers)
            text << ' ' << n;
        heard_.push_back(text.str());
    }
    void select(const drawing_state&, const gdi_object& object) override
    {
        write_line("select ", static_cast<int>(object.kind));
    }
    void change_clip(const drawing_state& state, const clip_change& what) override
    {
        write_line("clip ", what.index(), state.clipped ? " to " : " off", state.clip.extents().x1);
    }
    void save(const drawing_state&) override { write_line("save"); }
    void restore(const drawing_state& state, INT level) override
    {
        write_line("restore ", level, " at ", state.position);
    }
    UINT realise_palette(const drawing_state&) override
    {
        write_line("realise");
        return 7;
    }
    INT escape(const drawing_state&, INT function, std::span<const char> in, void*) override
    {
        write_line("escape ", function, ' ', std::string(in.begin(), in.end()));
        return 5;
    }

    void draw(const drawing_state& state, const figure& what) override
    {
        std::visit([&](const auto& f) { hear(state, f); }, what);
    }
    void fill(const drawing_state&, const region_fill& what) override
    {
        write_line("region ", static_cast<int>(what.by), ' ', what.area.area.extents().x2);
    }
    void fill(const drawing_state&, const region_frame& what) override
    {
        write_line("region frame ", what.width, 'x', what.height, ' ', what.brush.log.lbColor);
    }
    void fill(const drawing_state&, const box_fill& what) override
    {
        write_line("box ", what.box, ' ', what.brush.log.lbColor);
    }
    void fill(const drawing_state&, const pattern_block& what) override
    {
        write_line("pattern ", what.to, ' ', what.operation);
    }
    void write(const drawing_state& state, const text_call& what) override
    {
        write_line("text ", what.at, ' ', what.text, ' ', what.options, ' ', what.box, ' ',
            what.advances ? what.advances[0] : -1, ' ', what.line != nullptr, " from ", state.position);
    }
    bool copy(const drawing_state&, const context_block& what) override
    {
        write_line("copy ", what.to, " from ", what.from, " of ", what.source.width, ' ', what.operation);
        return true;
    }
    bool copy(const drawing_state&, const dib_block& what) override
    {
        write_line("dib ", what.to, " from ", what.from, " of ", what.data.source.pixels().width, ' ',
            what.operation);
        return true;
    }
    bool copy(const drawing_state&, const dib_band& what) override
    {
        write_line("band ", what.to, ' ', what.width, 'x', what.height, " from ", what.x, ',', what.y,
            " lines ", what.start_line, '+', what.lines);
        return true;
    }
    COLORREF set_pixel(const drawing_state&, POINT at, COLORREF colour) override
    {
        write_line("set_pixel ", at, ' ', colour);
        return colour;
    }
    bool flood(const drawing_state&, POINT from, COLORREF colour, UINT type) override
    {
        write_line("flood ", from, ' ', colour, ' ', type);
        return true;
    }

private:
    template <class... Parts> void write_line(const Parts&... parts)
    {
        std::ostringstream text;
        (text << ... << parts);
        heard_.push_back(text.str());
    }

    void hear(const drawing_state& state, const line_to& f)
    {
        write_line("line from ", state.position, " to ", f.end);
    }
    void hear(const drawing_state&, const polyline& f) { write_line("polyline", f.points); }
    void hear(const drawing_state&, const beziers& f) { write_line("beziers", f.points); }
    void hear(const drawing_state&, const polygons& f)
    {
        write_line("polygons ", f.counts.size(), ':', std::span(f.points, std::size_t(f.counts[0])));
    }
    void hear(const drawing_state&, const rectangle& f) { write_line("rectangle ", f.box); }
    void hear(const drawing_state&, const rounded_rectangle& f)
    {
        write_line("rounded ", f.box, ' ', f.width, 'x', f.height);
    }
    void hear(const drawing_state&, const ellipse_in& f) { write_line("ellipse ", f.box); }
    void hear(const drawing_state&, const ellipse_ring& f) { write_line("ring ", f.outer, ' ', f.inner); }
    void hear(const drawing_state&, const elliptic_arc& f)
    {
        write_line("arc ", static_cast<int>(f.closed), ' ', f.box, ' ', f.start, ' ', f.end);
    }

    std::vector<std::string>& heard_;
    region visible_;
};

class Sinks : public testing::Test {
protected:
    Sinks()
        : dc_(make_context(std::make_unique<listening_sink>(heard_)))
    {
        // Nothing that a function says is in device units unless it should be.
        SetMapMode(dc_, MM_ANISOTROPIC);
        SetWindowExtEx(dc_, 1, 1, nullptr);
        SetViewportExtEx(dc_, 10, -10, nullptr);
        heard_.clear();
    }
    ~Sinks() override { DeleteDC(dc_); }

    struct expectation {
        std::function<bool()> call;
        std::vector<std::string> heard;
    };
    void expect(const std::vector<expectation>& cases)
    {
        for (const auto& c : cases) {
            heard_.clear();
            EXPECT_TRUE(c.call()) << (c.heard.empty() ? "" : c.heard.front());
            EXPECT_EQ(heard_, c.heard);
        }
    }
    static std::string set_line(setting what, const char* numbers)
    {
        return "set " + std::to_string(static_cast<int>(what)) + ' ' + numbers;
    }

    std::vector<std::string> heard_;
    HDC dc_;
};

TEST_F(Sinks, HearFiguresInLogicalUnitsOneCallEach)
{
    const POINT points[] = {{1, 2}, {3, 4}, {5, 6}, {7, 8}};
    const INT corners[] = {3};
    const RECT inner{2, 2, 3, 3};
    MoveToEx(dc_, 9, 9, nullptr);
    expect({
        {[&] { return LineTo(dc_, 4, 5); }, {"line from 9,9 to 4,5"}},
        {[&] { return LineTo(dc_, 0, 0); }, {"line from 4,5 to 0,0"}},
        {[&] { return Polyline(dc_, points, 3); }, {"polyline 1,2 3,4 5,6"}},
        {[&] { return PolyBezier(dc_, points, 4); }, {"beziers 1,2 3,4 5,6 7,8"}},
        {[&] { return Polygon(dc_, points, 4); }, {"polygons 1: 1,2 3,4 5,6 7,8"}},
        {[&] { return PolyPolygon(dc_, points, corners, 1); }, {"polygons 1: 1,2 3,4 5,6"}},
        {[&] { return Rectangle(dc_, 1, 2, 3, 4); }, {"rectangle 1,2,3,4"}},
        {[&] { return RoundRect(dc_, 1, 2, 3, 4, 5, 6); }, {"rounded 1,2,3,4 5x6"}},
        {[&] { return Ellipse(dc_, 1, 2, 3, 4); }, {"ellipse 1,2,3,4"}},
        {[&] {
             return EllipseRing(dc_, {1, 1, 9, 9}, inner);
         },
            {"ring 1,1,9,9 2,2,3,3"}},
        {[&] { return Arc(dc_, 1, 2, 3, 4, 5, 6, 7, 8); }, {"arc 0 1,2,3,4 5,6 7,8"}},
        {[&] { return Chord(dc_, 1, 2, 3, 4, 5, 6, 7, 8); }, {"arc 1 1,2,3,4 5,6 7,8"}},
        {[&] { return Pie(dc_, 1, 2, 3, 4, 5, 6, 7, 8); }, {"arc 2 1,2,3,4 5,6 7,8"}},
        {[&] { return SetPixel(dc_, 3, 4, red) == red; }, {"set_pixel 3,4 255"}},
        {[&] { return SetPixelV(dc_, 3, 4, red); }, {"set_pixel 3,4 255"}},
        {[&] { return GetPixel(dc_, 3, 4) == CLR_INVALID; }, {"get_pixel 3,4"}},
        {[&] { return ExtFloodFill(dc_, 3, 4, blue, FLOODFILLSURFACE); }, {"flood 3,4 16711680 1"}},
    });
}

TEST_F(Sinks, HearFillsCopiesAndText)
{
    const HBRUSH brush = CreateSolidBrush(red);
    const HRGN area = CreateRectRgn(0, 0, 6, 2);
    const RECT box{1, 2, 3, 4};
    raster_canvas source(8, 8);
    SetMapMode(source, MM_ANISOTROPIC);
    SetViewportExtEx(source, 2, 2, nullptr);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, 2, 2, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    const std::uint8_t bits[16] = {};
    const LONG advances[] = {11, 12};
    MoveToEx(dc_, 5, 5, nullptr);
    expect({
        {[&] { return FillRgn(dc_, area, brush); }, {"region 0 6"}},
        {[&] { return PaintRgn(dc_, area); }, {"region 1 6"}},
        {[&] { return InvertRgn(dc_, area); }, {"region 2 6"}},
        {[&] { return FrameRgn(dc_, area, brush, 3, 2); }, {"region frame 3x2 255"}},
        {[&] { return FillRect(dc_, &box, brush); }, {"box 1,2,3,4 255"}},
        {[&] { return FillRect(dc_, &box, handle_of<HBRUSH>(3)); }, {"box 1,2,3,4 8388608"}},
        {[&] { return PatBlt(dc_, 1, 2, -3, 4, PATCOPY); }, {"pattern 1,2+-3x4 15728673"}},
        {[&] { return BitBlt(dc_, 1, 2, 3, 3, source, 1, 1, SRCCOPY); },
            {"copy 1,2+3x3 from 2,2+6x6 of 8 13369376"}},
        {[&] { return StretchBlt(dc_, 1, 2, 3, 3, source, 1, 1, 2, -2, SRCAND); },
            {"copy 1,2+3x3 from 2,2+4x-4 of 8 8913094"}},
        {[&] { return BitBlt(dc_, 1, 2, 3, 3, nullptr, 1, 1, WHITENESS); }, {"pattern 1,2+3x3 16711778"}},
        {[&] {
             return StretchDIBits(dc_, 1, 2, 3, 4, 0, 1, 2, 1, bits, &info, DIB_RGB_COLORS, SRCCOPY) == 2;
         },
            {"dib 1,2+3x4 from 0,1+2x1 of 2 13369376"}},
        {[&] { return SetDIBitsToDevice(dc_, 1, 2, 2, 2, 0, 0, 1, 1, bits, &info, DIB_RGB_COLORS) == 1; },
            {"band 1,2 2x2 from 0,0 lines 1+1"}},
        {[&] { return TextOutA(dc_, 1, 2, "ab", 2); }, {"text 1,2 ab 0 0,0,0,0 -1 1 from 5,5"}},
        {[&] { return ExtTextOutA(dc_, 1, 2, ETO_CLIPPED, &box, "ab", 2, advances); },
            {"text 1,2 ab 4 1,2,3,4 11 1 from 5,5"}},
        {[&] { return ExtTextOutA(dc_, 1, 2, ETO_OPAQUE, &box, nullptr, 0, nullptr); },
            {"text 1,2  2 1,2,3,4 -1 0 from 5,5"}},
    });
    DeleteObject(brush);
    DeleteObject(area);
}

TEST_F(Sinks, HearStateAsItWasCalled)
{
    const HPEN pen = CreatePen(PS_SOLID, 3, red);
    const HRGN area = CreateRectRgn(4, 0, 6, 2);
    expect({
        {[&] { return SetBkMode(dc_, TRANSPARENT) == OPAQUE; }, {set_line(setting::background_mode, "1")}},
        {[&] { return SetTextColor(dc_, red) == black; }, {set_line(setting::text_colour, "255")}},
        {[&] { return SetROP2(dc_, R2_XORPEN); }, {set_line(setting::mix_mode, "7")}},
        {[&] { return SetROP2(dc_, 99) == 0; }, {}},
        {[&] { return MoveToEx(dc_, 3, 4, nullptr); }, {set_line(setting::position, "3 4")}},
        {[&] { return OffsetWindowOrgEx(dc_, 1, 2, nullptr); }, {set_line(setting::window_offset, "1 2")}},
        {[&] { return ScaleViewportExtEx(dc_, 3, 2, 1, 1, nullptr); },
            {set_line(setting::viewport_scale, "3 2 1 1")}},
        {[&] { return !SetWindowExtEx(dc_, 0, 1, nullptr); }, {}},
        {[&] { return SetTextJustification(dc_, 9, 2); }, {set_line(setting::justification, "9 2")}},
        {[&] { return SelectObject(dc_, pen) != nullptr; }, {"select 0"}},
        {[&] { return SelectPalette(dc_, static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), 0); },
            {"select 5"}},
        {[&] { return RealizePalette(dc_) == 7; }, {"realise"}},
        {[&] { return SaveDC(dc_) == 1; }, {"save"}},
        {[&] { return IntersectClipRect(dc_, 2, 0, 4, 4) == SIMPLEREGION; }, {"clip 0 to 15"}},
        {[&] { return OffsetClipRgn(dc_, 1, 0) == SIMPLEREGION; }, {"clip 2 to 30"}},
        {[&] { return ExcludeClipRect(dc_, 0, 0, 1, 1); }, {"clip 1 to 30"}},
        {[&] { return SelectClipRgn(dc_, area) == SIMPLEREGION; }, {"clip 3 to 4"}},
        {[&] { return SelectObject(dc_, area) != nullptr; }, {"clip 3 to 4"}},
        {[&] { return SelectClipRgn(dc_, nullptr) == SIMPLEREGION; }, {"clip 3 off0"}},
        {[&] { return RestoreDC(dc_, -1); }, {"restore -1 at 3,4"}},
        {[&] { return !RestoreDC(dc_, -1); }, {}},
        {[&] { return Escape(dc_, BEGIN_PATH, 2, "xy", nullptr) == 5; }, {"escape 4096 xy"}},
    });
    DeleteObject(pen);
    DeleteObject(area);
}

TEST_F(Sinks, AnswerForTheContext)
{
    EXPECT_EQ(GetObjectType(reinterpret_cast<HGDIOBJ>(dc_)), OBJ_METADC);
    EXPECT_EQ(GetDeviceCaps(dc_, TECHNOLOGY), DT_METAFILE);
    EXPECT_EQ(GetNearestColor(dc_, RGB(0x11, 0x22, 0x33)), RGB(0x10, 0x20, 0x30));
    RECT clip{};
    EXPECT_EQ(GetClipBox(dc_, &clip), SIMPLEREGION);
    EXPECT_EQ(clip, (RECT{-100, 100, 100, -100}));
    BITMAP made{};
    const HBITMAP bitmap = CreateCompatibleBitmap(dc_, 3, 2);
    GetObjectA(bitmap, sizeof made, &made);
    EXPECT_EQ(made.bmBitsPixel, 24);
    // It has no pixels to select a bitmap for, or to copy from.
    EXPECT_EQ(SelectObject(dc_, bitmap), nullptr);
    raster_canvas canvas(2, 2);
    EXPECT_FALSE(BitBlt(canvas, 0, 0, 2, 2, dc_, 0, 0, SRCCOPY));
    DeleteObject(bitmap);
}

TEST_F(Sinks, FollowTheCurrentPositionOfText)
{
    SetTextAlign(dc_, TA_UPDATECP);
    MoveToEx(dc_, 50, 60, nullptr);
    const LONG advances[] = {20, 30};
    heard_.clear();
    ExtTextOutA(dc_, 1, 2, 0, nullptr, "ab", 2, advances);
    EXPECT_EQ(heard_, (std::vector<std::string>{"text 1,2 ab 0 0,0,0,0 20 1 from 50,60"}));
    POINT at{};
    GetCurrentPositionEx(dc_, &at);
    EXPECT_EQ(at, (POINT{100, 60}));
}

TEST(PaintedPixels, AreCountedWithThoseOfCompatibleContexts)
{
    raster_canvas canvas(10, 10);
    PatBlt(canvas, 0, 0, 10, 10, BLACKNESS);
    EXPECT_EQ(PaintedPixels(canvas), 0U);
    EXPECT_TRUE(CountPaintedPixels(canvas));
    PatBlt(canvas, -5, 0, 10, 4, BLACKNESS); // half of it lies outside
    EXPECT_EQ(PaintedPixels(canvas), 20U);
    const HDC other = CreateCompatibleDC(canvas);
    PatBlt(other, 0, 0, 1, 1, WHITENESS);
    EXPECT_EQ(PaintedPixels(canvas), 21U);
    const HDC unrelated = CreateCompatibleDC(nullptr);
    PatBlt(unrelated, 0, 0, 1, 1, WHITENESS);
    EXPECT_EQ(PaintedPixels(canvas), 21U);
    EXPECT_EQ(PaintedPixels(other), 21U);
    DeleteDC(other);
    DeleteDC(unrelated);
}

} // namespace
} // namespace klv
