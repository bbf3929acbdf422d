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

class cache_instance : public vOBJECT {
public:
    vDEVICE* draw(std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit) noexcept;

    image_cache_store store;
    std::uint16_t handles = 0;

private:
    vDEVICE* finish_rendering(vDEVICE& device, const rendering_place& place) noexcept;
    vDEVICE* start_rendering(
        std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, const rendering_place& place) noexcept;
    image_cache_item* item_for(
        std::uint32_t id, const oIMGCONTEXT& context, const rendering_place& place) noexcept;

    /// The item that a caller is drawing on; not in the store before it is complete.
    std::unique_ptr<image_cache_item> rendering_;
    std::uint32_t rendering_id_ = 0;
};

cache_instance* instance = nullptr;
/// Set while the caller draws directly onto the device it asked for.
bool pass_through = false;

vDEVICE* draw_directly(vDEVICE& device)
{
    pass_through = true;
    return &device;
}

vDEVICE* cache_instance::draw(
    std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit) noexcept
{
    const vDEV_TYPE type = device.DeviceType();
    if (type != vDEV_DISPLAY && type != vDEV_BITMAP)
        return draw_directly(device);
    const rendering_place place(device, context, limit);
    if (place.empty())
        return draw_directly(device);
    if (rendering_ && rendering_->surface.get() == &device)
        return draw_directly(device); // an image within the image
    if (rendering_ && rendering_id_ == id && *rendering_->context == context)
        return finish_rendering(device, place);
    rendering_.reset(); // left unfinished by its caller
    if (image_cache_item* const item = item_for(id, context, place)) {
        item->surface->Draw(device, place.area);
        return nullptr;
    }
    return start_rendering(id, device, context, place);
}

image_cache_item* cache_instance::item_for(
    std::uint32_t id, const oIMGCONTEXT& context, const rendering_place& place) noexcept
{
    image_cache_store::group* const group = store.find(id);
    if (!group)
        return nullptr;
    for (const auto& item : group->items)
        if (item->surface->Size() == vRECT(0, 0, place.width, place.height)
            && item->context->CompareRenderInfo(context, 0))
            return item.get();
    return nullptr;
}

vDEVICE* cache_instance::start_rendering(
    std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, const rendering_place& place) noexcept
{
    std::unique_ptr<oIMGCONTEXT> kept_context(context.Duplicate());
    std::unique_ptr<vDISPLAYBMP> surface = surface_like(device, place);
    if (!kept_context || !surface)
        return draw_directly(device);
    vDISPLAYBMP* const target = surface.get();
    rendering_.reset(new image_cache_item(std::move(kept_context), std::move(surface), surface_bytes(place)));
    if (!rendering_)
        return draw_directly(device);
    rendering_id_ = id;
    return target;
}

vDEVICE* cache_instance::finish_rendering(vDEVICE& device, const rendering_place& place) noexcept
{
    vDISPLAYBMP& surface = *rendering_->surface;
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
    store.add(rendering_id_, std::move(rendering_), cache_budget());
    return nullptr;
}

} // namespace

vIMAGECACHE::vIMAGECACHE() noexcept
{
    if (!instance)
        instance = new cache_instance;
    if (instance)
        ++instance->handles;
}

vIMAGECACHE::vIMAGECACHE(const vIMAGECACHE&) noexcept
    : vIMAGECACHE()
{
}

vIMAGECACHE::~vIMAGECACHE()
{
    if (!instance || --instance->handles != 0)
        return;
    delete instance;
    instance = nullptr;
}

vDEVICE* vIMAGECACHE::Draw(
    std::uint32_t id, vDEVICE& device, const oIMGCONTEXT& context, std::int32_t limit) noexcept
{
    if (pass_through) {
        pass_through = false;
        return nullptr;
    }
    if (!instance)
        return draw_directly(device);
    return instance->draw(id, device, context, limit < 0 ? default_limit : limit);
}

void vIMAGECACHE::Clear(std::uint32_t id) noexcept
{
    if (instance)
        instance->store.remove(id);
}

void vIMAGECACHE::ClearAll() noexcept
{
    if (instance)
        instance->store.clear();
}

int vIMAGECACHE::LockItem(std::uint32_t id, int lock) noexcept
{
    image_cache_store::group* const group = instance ? instance->store.find(id) : nullptr;
    if (!group)
        return 0;
    group->locked = lock != 0;
    for (const auto& item : group->items)
        item->locked = lock != 0;
    return 1;
}

int vIMAGECACHE::LockItemImage(std::uint32_t id, std::uint32_t image, int lock) noexcept
{
    image_cache_store::group* const group = instance ? instance->store.find(id) : nullptr;
    if (!group || image >= group->items.size())
        return 0;
    (*std::next(group->items.begin(), image))->locked = lock != 0;
    return 1;
}

int vIMAGECACHE::QyItemIsLocked(std::uint32_t id) noexcept
{
    const image_cache_store::group* const group = instance ? instance->store.find(id) : nullptr;
    return group && group->locked;
}

} // namespace klv
