#include "klv/gdi/gdi.h"
#include "klv/gdi/state/dc.h"

namespace klv {

using namespace gdi;

namespace {

/// Swaps the selected object. \return the handle of the one before.
template <class Field> HGDIOBJ exchange(Field& field, const std::shared_ptr<gdi_object>& object)
{
    const HGDIOBJ old = handle_of<HGDIOBJ>(field ? field->token : 0);
    field = std::static_pointer_cast<typename Field::element_type>(object);
    return old;
}

HGDIOBJ select_bitmap(drawing_context& dc, const std::shared_ptr<gdi_object>& object)
{
    auto& bitmap = static_cast<bitmap_object&>(*object);
    const HDC self = handle_of<HDC>(dc.token);
    if (dc.context != context_kind::memory
        || (bitmap.selected_into != nullptr && bitmap.selected_into != self))
        return nullptr;
    dc.state.bitmap->selected_into = nullptr;
    if (!bitmap.stock)
        bitmap.selected_into = self;
    const HGDIOBJ old = exchange(dc.state.bitmap, object);
    dc.clip_changed();
    return old;
}

} // namespace

HGDIOBJ SelectObject(HDC handle, HGDIOBJ object) noexcept
{
    auto* dc = find_context(handle);
    const auto* found = find_object(token_of(object));
    if (dc == nullptr || found == nullptr)
        return nullptr;
    switch ((*found)->kind) {
    case object_kind::pen:
        return exchange(dc->state.pen, *found);
    case object_kind::brush:
        return exchange(dc->state.brush, *found);
    case object_kind::font:
        return exchange(dc->state.font, *found);
    case object_kind::bitmap:
        return select_bitmap(*dc, *found);
    case object_kind::region:
        return handle_of<HGDIOBJ>(
            static_cast<std::uint32_t>(SelectClipRgn(handle, static_cast<HRGN>(object))));
    default:
        return nullptr;
    }
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
        return static_cast<drawing_context&>(**found).context == context_kind::screen ? OBJ_DC : OBJ_MEMDC;
    }
    return 0;
}

INT GetObjectA(HGDIOBJ object, INT size, void* buffer) noexcept
{
    const auto* found = find_object(token_of(object));
    return found == nullptr ? 0 : (*found)->describe(size, buffer);
}

} // namespace klv
