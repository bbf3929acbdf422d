#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/text/text_line.h"

#include <optional>

namespace klv {

using namespace gdi;

int TextOutA(HDC dc, int x, int y, const char* text, int count) noexcept
{
    return count < 0 ? 0
                     : ExtTextOutA(dc, x, y, 0, nullptr, text, static_cast<std::uint32_t>(count), nullptr);
}

int ExtTextOutA(HDC handle, int x, int y, std::uint32_t options, const RECT* rect, const char* text,
    std::uint32_t count, const std::int32_t* dx) noexcept
{
    return with_context(handle, [=](drawing_context& dc) {
        if (!text && count > 0)
            return 0;
        const std::string_view bytes(text, count);
        std::optional<text_line> line;
        if (selected_font selected = count > 0 ? find_selected_font(dc.state) : selected_font();
            selected.font)
            line.emplace(dc.state, std::move(selected), POINT{x, y}, bytes, dx);
        const std::uint32_t boxed = rect ? options & (ETO_OPAQUE | ETO_CLIPPED) : 0;
        dc.out->write(dc.state, {{x, y}, boxed, rect ? *rect : RECT{}, bytes, dx, line ? &*line : nullptr});
        if (line && (dc.state.text_align & TA_UPDATECP) != 0)
            dc.state.position = line->end_position(dc.state);
        return 1;
    });
}

} // namespace klv
