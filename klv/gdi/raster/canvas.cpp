#include "klv/gdi/raster/canvas.h"

namespace klv::gdi {

raster_scratch& thread_scratch()
{
    static thread_local raster_scratch scratch;
    return scratch;
}

} // namespace klv::gdi
