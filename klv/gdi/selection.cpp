#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/text/font.h"

#include <utility>

namespace klv {

using namespace gdi;

namespace {

/// Swaps the selected object. \return the handle of the one before.
template <class Object>
HGDIOBJ select(drawing_context& dc, std::shared_ptr<Object>& field, const std::shared_ptr<gdi_object>& object)
{
    const auto old = std::exchange(field, std::static_pointer_cast<Object>(object));
    dc.out->select(dc.state, *object);
    return handle_of<HGDIOBJ>(old->token);
}

HGDIOBJ select_bitmap(drawing_context& dc, const std::shared_ptr<gdi_object>& object)
{
    auto& bitmap = static_cast<bitmap_object&>(*object);
    const HDC self = handle_of<HDC>(dc.token);
    if (!dc.state.bitmap || (bitmap.selected_into != nullptr && bitmap.selected_into != self))
        return nullptr;
    dc.state.bitmap->release();
    bitmap.take(self);
    return select(dc, dc.state.bitmap, object);
}

} // namespace

HGDIOBJ SelectObject(HDC handle, HGDIOBJ object) noexcept
{
    return with_context(handle, [=](drawing_context& dc) -> HGDIOBJ {
        const auto* found = find_object(token_of(object));
        if (found == nullptr)
            return nullptr;
        switch ((*found)->kind) {
        case object_kind::pen:
            return select(dc, dc.state.pen, *found);
        case object_kind::brush:
            return select(dc, dc.state.brush, *found);
        case object_kind::font:
            return select(dc, dc.state.font, *found);
        case object_kind::bitmap:
            return select_bitmap(dc, *found);
        case object_kind::region:
            return handle_of<HGDIOBJ>(
                static_cast<std::uint32_t>(SelectClipRgn(handle, static_cast<HRGN>(object))));
        default:
            return nullptr;
        }
    });
}

BOOL DeleteObject(HGDIOBJ object) noexcept
{
    const auto* found = find_object(token_of(object));
    if (found == nullptr || (*found)->kind == object_kind::context)
        return FALSE;
    return (*found)->stock || remove_object(token_of(object));
}

HGDIOBJ GetCurrentObject(HDC handle, UINT type) noexcept
{
    const auto* dc = find_context(handle);
    if (dc == nullptr)
        return nullptr;
    const auto handle_in = [](const auto& field) { return handle_of<HGDIOBJ>(field ? field->token : 0); };
    switch (type) {
    case OBJ_PEN:
        return handle_in(dc->state.pen);
    case OBJ_BRUSH:
        return handle_in(dc->state.brush);
    case OBJ_FONT:
        return handle_in(dc->state.font);
    case OBJ_BITMAP:
        return handle_in(dc->state.bitmap);
    case OBJ_PAL:
        return handle_in(dc->state.palette);
    default:
        return nullptr;
    }
}

UINT GetObjectType(HGDIOBJ object) noexcept
{
    const auto* found = find_object(token_of(object));
    if (found == nullptr)
        return 0;
    switch ((*found)->kind) {
    case object_kind::pen:
        return OBJ_PEN;
    case object_kind::brush:
        return OBJ_BRUSH;
    case object_kind::font:
        return OBJ_FONT;
    case object_kind::bitmap:
        return OBJ_BITMAP;
    case object_kind::region:
        return OBJ_REGION;
    case object_kind::palette:
        return OBJ_PAL;
    case object_kind::context:
        return static_cast<drawing_context&>(**found).out->type();
    }
    return 0;
}

INT GetObjectA(HGDIOBJ object, INT size, void* buffer) noexcept
{
    const auto* found = find_object(token_of(object));
    return found == nullptr ? 0 : (*found)->describe(size, buffer);
}

} // namespace klv
