#include "klv/images/detail/image_cache_store.h"

#include "klv/bitmaps/image_context.h"
#include "klv/devices/display_bitmap.h"
#include "klv/platform/host.h"

#include <algorithm>
#include <new>

namespace klv {

image_cache_item::image_cache_item(std::unique_ptr<oIMGCONTEXT> rendered_with,
    std::unique_ptr<vDISPLAYBMP> rendered, std::uint64_t size) noexcept
    : context(std::move(rendered_with))
    , surface(std::move(rendered))
    , bytes(size)
{
}

image_cache_item::~image_cache_item()
{
    if (locked)
        OutputDebugStringA("Warning - vITEM::~vITEM - destructing when locked!\n");
}

image_cache_item* image_cache_store::add(
    std::uint32_t id, std::shared_ptr<image_cache_item> item, std::uint64_t budget) noexcept
{
    if (!item || !fMakeRoomInCache(item->bytes, budget))
        return nullptr;
    try {
        group* of_image = find(id);
        if (!of_image)
            of_image = &groups_.emplace_back(id);
        of_image->items.push_back(std::move(item));
        image_cache_item& kept = *of_image->items.back();
        kept.locked = of_image->locked;
        total_bytes_ += kept.bytes;
        ++item_count_;
        return &kept;
    } catch (const std::bad_alloc&) {
        groups_.remove_if([](const group& each) { return each.items.empty(); });
        return nullptr;
    }
}

bool image_cache_store::fMakeRoomInCache(std::uint64_t bytes, std::uint64_t budget) noexcept
{
    for (group& each : groups_) {
        if (each.locked)
            continue;
        for (auto item = each.items.begin(); item != each.items.end() && too_full_for(bytes, budget);) {
            if ((*item)->locked) {
                ++item;
                continue;
            }
            forget(**item);
            item = each.items.erase(item);
        }
    }
    groups_.remove_if([](const group& each) { return each.items.empty(); });
    if (!too_full_for(bytes, budget))
        return true;
    OutputDebugStringA("vIMAGECACHEINSTANCE::fMakeRoomInCache(...) failed!");
    return false;
}

image_cache_store::group* image_cache_store::find(std::uint32_t id) noexcept
{
    const auto found = std::ranges::find(groups_, id, &group::id);
    return found == groups_.end() ? nullptr : &*found;
}

void image_cache_store::remove(std::uint32_t id) noexcept
{
    groups_.remove_if([&](const group& each) {
        if (each.id != id)
            return false;
        for (const auto& item : each.items)
            forget(*item);
        return true;
    });
}

void image_cache_store::clear() noexcept
{
    groups_.clear();
    total_bytes_ = 0;
    item_count_ = 0;
}

void image_cache_store::forget(const image_cache_item& item) noexcept
{
    total_bytes_ -= item.bytes;
    --item_count_;
}

} // namespace klv
