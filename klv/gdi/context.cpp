#include "klv/gdi/state/context.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/raster_sink.h"
#include "klv/gdi/state/stock.h"
#include "klv/gdi/text/font.h"

#include <cstring>

namespace klv {

namespace gdi {

drawing_context::drawing_context(std::unique_ptr<sink> receiver)
    : gdi_object(kind_id)
    , out(std::move(receiver))
{
    state.pen = std::static_pointer_cast<pen_object>(stock_object(BLACK_PEN));
    state.brush = std::static_pointer_cast<brush_object>(stock_object(WHITE_BRUSH));
    state.font = std::static_pointer_cast<font_object>(stock_object(SYSTEM_FONT));
    state.palette = std::static_pointer_cast<palette_object>(stock_object(DEFAULT_PALETTE));
    if (out->type() == OBJ_MEMDC)
        state.bitmap = stock_bitmap();
}

drawing_context::~drawing_context()
{
    if (state.bitmap)
        state.bitmap->release();
}

HDC make_context(std::unique_ptr<sink> receiver)
{
    return make_object<HDC, drawing_context>(std::move(receiver));
}

palette_view palette_of(const drawing_context* dc)
{
    if (dc == nullptr)
        return std::nullopt;
    return dc->state.palette->entries;
}

namespace {

HDC make_raster_context(raster_sink::place where)
{
    return guarded([=] { return make_context(std::make_unique<raster_sink>(where)); });
}

HDC make_screen_context(const char* driver)
{
    if (driver == nullptr || std::strcmp(driver, "DISPLAY") != 0)
        return nullptr;
    return make_raster_context(raster_sink::place::screen);
}

void take_back(drawing_context& dc, std::size_t level)
{
    auto& from = dc.saved[level];
    if (dc.state.bitmap != from.bitmap) {
        dc.state.bitmap->release();
        from.bitmap->take(handle_of<HDC>(dc.token));
    }
    dc.state = std::move(from);
    dc.saved.resize(level);
}

} // namespace

} // namespace gdi

using namespace gdi;

HDC CreateDCA(const char* driver, const char*, const char*, const void*) noexcept
{
    return make_screen_context(driver);
}
HDC CreateICA(const char* driver, const char*, const char*, const void*) noexcept
{
    return make_screen_context(driver);
}

HDC CreateCompatibleDC(HDC like) noexcept
{
    const auto* from = find_context(like);
    if (like != nullptr && from == nullptr)
        return nullptr;
    const HDC made = make_raster_context(raster_sink::place::memory);
    if (auto* dc = find_context(made); dc != nullptr && from != nullptr) {
        dc->out->set_dots_per_inch(from->out->dots_per_inch());
        dc->out->set_meter(from->out->meter());
    }
    return made;
}

BOOL DeleteDC(HDC dc) noexcept { return find_context(dc) != nullptr && remove_object(token_of(dc)); }

HDC GetDC(HWND) noexcept { return make_raster_context(raster_sink::place::screen); }

INT ReleaseDC(HWND, HDC dc) noexcept { return DeleteDC(dc); }

INT SaveDC(HDC handle) noexcept
{
    return with_context(handle, [](drawing_context& dc) {
        dc.saved.push_back(dc.state);
        dc.out->save(dc.state);
        return static_cast<INT>(dc.saved.size());
    });
}

BOOL RestoreDC(HDC handle, INT saved) noexcept
{
    return with_context(handle, [&](drawing_context& dc) -> BOOL {
        const auto count = static_cast<INT>(dc.saved.size());
        const INT level = saved < 0 ? count + saved : saved - 1;
        if (level < 0 || level >= count)
            return FALSE;
        take_back(dc, static_cast<std::size_t>(level));
        dc.out->restore(dc.state, saved);
        return TRUE;
    });
}

INT GetDeviceCaps(HDC handle, INT index) noexcept
{
    return with_context(handle, [&](drawing_context& dc) { return dc.out->capability(dc.state, index); });
}

INT Escape(HDC handle, INT function, INT size, const char* in, void* out) noexcept
{
    return with_context(handle, [&](drawing_context& dc) {
        const auto given = in == nullptr || size < 0 ? 0 : static_cast<std::size_t>(size);
        return dc.out->escape(dc.state, function, {in, given}, out);
    });
}

BOOL SetDeviceResolution(HDC handle, INT dots_per_inch) noexcept
{
    constexpr INT highest = 100000;
    return with_context(handle, [&](drawing_context& dc) -> BOOL {
        if (dots_per_inch <= 0 || dots_per_inch > highest)
            return FALSE;
        dc.out->set_dots_per_inch(dots_per_inch);
        return TRUE;
    });
}

INT ThinnestLine(HDC handle) noexcept
{
    return with_context(handle, 1, [](drawing_context& dc) { return dc.out->common_pixel(); });
}

BOOL CountPaintedPixels(HDC handle) noexcept
{
    return with_context(handle, [](drawing_context& dc) -> BOOL {
        dc.out->set_meter(std::make_shared<paint_meter>());
        return TRUE;
    });
}

std::uint64_t PaintedPixels(HDC handle) noexcept
{
    return with_context(handle, [](drawing_context& dc) {
        const auto& meter = dc.out->meter();
        return meter ? meter->pixels() : std::uint64_t{0};
    });
}

BOOL GdiFlush() noexcept { return TRUE; }

} // namespace klv
