#include "klv/images/image_cache.h"

#include "klv/bitmaps/image_context.h"
#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/devices/display_bitmap.h"
#include "klv/gdi/gdi.h"
#include "klv/images/detail/image_cache_store.h"
#include "klv/platform/system/memory_status.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <new>

namespace klv {

namespace {

constexpr std::int32_t default_limit = 1200;

/// Where an image goes on a device, and the size in pixels at which it is rendered for that.
struct rendering_place {
    rendering_place(const vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit)
    {
        context.GetDstRect().DistortBbox(context.GetDistort(), area);
        vRECT pixels = area;
        device.LPtoDP(pixels);
        const double across = std::abs(static_cast<double>(pixels.Right()) - pixels.Left());
        const double down = std::abs(static_cast<double>(pixels.Bottom()) - pixels.Top());
        const double longer = std::max(across, down);
        scale = longer > limit ? limit / longer : 1.0;
        width = static_cast<int>(std::lround(across * scale));
        height = static_cast<int>(std::lround(down * scale));
    }
    [[nodiscard]] bool empty() const { return width < 1 || height < 1; }

    vRECT area; ///< logical units
    double scale; ///< pixels of the rendering for one of the device
    int width;
    int height;
};

std::uint64_t cache_budget()
{
    MEMORYSTATUS status{};
    GlobalMemoryStatus(&status);
    return status.dwAvailPhys + status.dwAvailPageFile * 3 / 10;
}

/// A surface that takes what the device would have been given, at the place's scale.
std::unique_ptr<vDISPLAYBMP> surface_like(const vDEVICE& device, const rendering_place& place)
{
    std::unique_ptr<vDISPLAYBMP> surface(new vDISPLAYBMP(place.width, place.height, 1));
    if (!surface || surface->Size() == vRECT())
        return nullptr;
    const auto scaled
        = [&](int units) { return std::max(1, static_cast<int>(std::lround(units * place.scale))); };
    // The surface has one resolution for both directions; the units make up for a device with two.
    const int dots_per_inch = scaled(device.DevUnitsPerHorzInch());
    SetDeviceResolution(surface->GetWinDC(), dots_per_inch);
    surface->ReleaseWinDC();
    surface->LogUnitsPerHorzInch(device.LogUnitsPerHorzInch());
    surface->LogUnitsPerVertInch(
        MulDiv(device.LogUnitsPerVertInch(), dots_per_inch, scaled(device.DevUnitsPerVertInch())));
    surface->Origin(vPOINT() - place.area.TopLeft());
    return surface;
}

std::uint64_t surface_bytes(const rendering_place& place)
{
    constexpr std::uint64_t bytes_per_pixel = 4;
    return bytes_per_pixel * static_cast<std::uint64_t>(place.width)
        * static_cast<std::uint64_t>(place.height);
}

/// The rendered images that all handles share. Items are in the use of one thread at a time, as their images
/// are; one that is evicted meanwhile lives until its thread has done with it.
struct shared_cache {
    std::mutex guard;
    std::uint32_t handles = 0;
    image_cache_store store;
};

shared_cache& cache()
{
    // Never destroyed: handles may be static objects. The last one leaves an empty store.
    alignas(shared_cache) static std::byte place[sizeof(shared_cache)];
    static auto* const made = ::new (place) shared_cache;
    return *made;
}

/// What a thread is drawing.
struct drawing {
    /// The thread draws directly onto the device that it asked for.
    bool pass_through = false;
    /// The item that it is drawing on; not in the store before it is complete.
    std::shared_ptr<image_cache_item> item;
    std::uint32_t id = 0;
};
thread_local drawing current;

vDEVICE* draw_directly(vDEVICE& device)
{
    current.pass_through = true;
    return &device;
}

std::shared_ptr<image_cache_item> item_for(
    std::uint32_t id, const oIMGCONTEXT& context, const rendering_place& place) noexcept
{
    const std::scoped_lock lock(cache().guard);
    image_cache_store::group* const group = cache().store.find(id);
    if (!group)
        return nullptr;
    for (const auto& item : group->items)
        if (item->surface->Size() == vRECT(0, 0, place.width, place.height)
            && item->context->CompareRenderInfo(context, 0))
            return item;
    return nullptr;
}

vDEVICE* start_rendering(
    std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, const rendering_place& place) noexcept
{
    std::unique_ptr<oIMGCONTEXT> kept_context(context.Duplicate());
    std::unique_ptr<vDISPLAYBMP> surface = surface_like(device, place);
    if (!kept_context || !surface)
        return draw_directly(device);
    vDISPLAYBMP* const target = surface.get();
    try {
        current.item = std::allocate_shared<image_cache_item>(vALLOCATOR<image_cache_item>(),
            std::move(kept_context), std::move(surface), surface_bytes(place));
    } catch (const std::bad_alloc&) {
        return draw_directly(device);
    }
    current.id = id;
    return target;
}

vDEVICE* finish_rendering(vDEVICE& device, const rendering_place& place) noexcept
{
    vDISPLAYBMP& surface = *current.item->surface;
    // Where two surfaces make the transparency, the same picture goes onto the second one.
    if (surface.IsDualSurfaced() && surface.QyIsRendered() == vBMP_NOT_RENDERED
        && surface.SwitchSurface(vSURFACE_SECOND)) {
        surface.SetRendered(vBMP_RENDERED);
        return &surface;
    }
    surface.SwitchSurface(vSURFACE_FIRST);
    surface.SetRendered(vBMP_RENDERED);
    surface.SetRenderedArea(place.area);
    surface.Draw(device, place.area);
    const std::shared_ptr<image_cache_item> complete = std::move(current.item);
    const std::uint64_t budget = cache_budget();
    const std::scoped_lock lock(cache().guard);
    if (cache().handles != 0)
        cache().store.add(current.id, complete, budget);
    return nullptr;
}

vDEVICE* draw_cached(
    std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit) noexcept
{
    const vDEV_TYPE type = device.DeviceType();
    if (type != vDEV_DISPLAY && type != vDEV_BITMAP)
        return draw_directly(device);
    const rendering_place place(device, context, limit);
    if (place.empty())
        return draw_directly(device);
    if (current.item && current.item->surface.get() == &device)
        return draw_directly(device); // an image within the image
    if (current.item && current.id == id && *current.item->context == context)
        return finish_rendering(device, place);
    current.item.reset(); // left unfinished by its caller
    if (const auto item = item_for(id, context, place)) {
        item->surface->Draw(device, place.area);
        return nullptr;
    }
    return start_rendering(id, device, context, place);
}

bool has_handles()
{
    const std::scoped_lock lock(cache().guard);
    return cache().handles != 0;
}

} // namespace

vIMAGECACHE::vIMAGECACHE() noexcept
{
    const std::scoped_lock lock(cache().guard);
    ++cache().handles;
}

vIMAGECACHE::vIMAGECACHE(const vIMAGECACHE&) noexcept
    : vIMAGECACHE()
{
}

vIMAGECACHE::~vIMAGECACHE()
{
    const std::scoped_lock lock(cache().guard);
    if (--cache().handles == 0)
        cache().store.clear();
}

vDEVICE* vIMAGECACHE::Draw(
    std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit) noexcept
{
    if (current.pass_through) {
        current.pass_through = false;
        return nullptr;
    }
    if (!has_handles())
        return draw_directly(device);
    return draw_cached(id, device, context, limit < 0 ? default_limit : limit);
}

void vIMAGECACHE::Clear(std::uint32_t id) noexcept
{
    const std::scoped_lock lock(cache().guard);
    cache().store.remove(id);
}

void vIMAGECACHE::ClearAll() noexcept
{
    const std::scoped_lock lock(cache().guard);
    cache().store.clear();
}

int vIMAGECACHE::LockItem(std::uint32_t id, int lock) noexcept
{
    const std::scoped_lock held(cache().guard);
    image_cache_store::group* const group = cache().store.find(id);
    if (!group)
        return 0;
    group->locked = lock != 0;
    for (const auto& item : group->items)
        item->locked = lock != 0;
    return 1;
}

int vIMAGECACHE::LockItemImage(std::uint32_t id, std::uint32_t image, int lock) noexcept
{
    const std::scoped_lock held(cache().guard);
    image_cache_store::group* const group = cache().store.find(id);
    if (!group || image >= group->items.size())
        return 0;
    (*std::next(group->items.begin(), image))->locked = lock != 0;
    return 1;
}

int vIMAGECACHE::QyItemIsLocked(std::uint32_t id) noexcept
{
    const std::scoped_lock held(cache().guard);
    const image_cache_store::group* const group = cache().store.find(id);
    return group && group->locked;
}

} // namespace klv
