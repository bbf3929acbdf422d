#include "klv/gdi/state/pen.h"

#include "klv/gdi/gdi.h"

namespace klv {

INT gdi::pen_object::describe(INT size, void* buffer) const
{
    return copy_description(&log, sizeof log, size, buffer);
}

HPEN CreatePenIndirect(const LOGPEN* pen) noexcept
{
    return gdi::guarded([&]() -> HPEN {
        if (pen == nullptr)
            return nullptr;
        LOGPEN log = *pen;
        if (log.lopnStyle > PS_INSIDEFRAME)
            log.lopnStyle = PS_SOLID;
        if (log.lopnWidth.x < 0)
            log.lopnWidth.x = log.lopnWidth.x == INT32_MIN ? INT32_MAX : -log.lopnWidth.x;
        if (log.lopnStyle == PS_NULL)
            return static_cast<HPEN>(GetStockObject(NULL_PEN));
        return gdi::make_object<HPEN, gdi::pen_object>(log);
    });
}

HPEN CreatePen(UINT style, INT width, COLORREF colour) noexcept
{
    const LOGPEN pen{style, {width, 0}, colour};
    return CreatePenIndirect(&pen);
}

} // namespace klv
