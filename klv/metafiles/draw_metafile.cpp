#include "klv/bitmaps/metafile_context.h"
#include "klv/devices/device.h"
#include "klv/metafiles/metafile.h"

namespace klv {

void vDEVICE::DrawMetafile(vMETAFILE& picture, oMFCONTEXT& context) noexcept
{
    picture.Draw(*this, context, nullptr);
}

void vDEVICE::DrawMetafile(vMETAFILE& picture, const vRECT& rect) noexcept
{
    picture.Draw(*this, rect, nullptr, vPOINT(), 0.0, 0, nullptr, nullptr);
}

} // namespace klv
