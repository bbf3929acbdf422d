#pragma once

#include "klv/base/memory.h"
#include "klv/core/object.h"

#include <cstdint>
#include <list>
#include <memory>

namespace klv {

class oIMGCONTEXT;
class vDISPLAYBMP;

/// An image as it was rendered with one context.
class image_cache_item : public vOBJECT {
public:
    image_cache_item(std::unique_ptr<oIMGCONTEXT> rendered_with, std::unique_ptr<vDISPLAYBMP> rendered,
        std::uint64_t size) noexcept;
    image_cache_item(const image_cache_item&) = delete;
    image_cache_item& operator=(const image_cache_item&) = delete;
    /// Warns on the debugger output when the item is still locked.
    ~image_cache_item();

    std::unique_ptr<oIMGCONTEXT> context;
    std::unique_ptr<vDISPLAYBMP> surface;
    std::uint64_t bytes;
    bool locked = false;
};

/// The rendered images of the cache, in groups by image, the oldest group first.
class image_cache_store {
public:
    /// Cached items, at most.
    static constexpr std::size_t most_items = 50;

    struct group {
        explicit group(std::uint32_t image)
            : id(image)
        {
        }
        std::uint32_t id;
        bool locked = false;
        std::list<std::shared_ptr<image_cache_item>, vALLOCATOR<std::shared_ptr<image_cache_item>>> items;
    };
    using group_list = std::list<group, vALLOCATOR<group>>;

    /// Makes room for an item of so many bytes and keeps it. Null, and a line on the debugger output, when
    /// there is no room: then the item is given up.
    image_cache_item* add(
        std::uint32_t id, std::shared_ptr<image_cache_item> item, std::uint64_t budget) noexcept;
    /// The group of an image, or null.
    [[nodiscard]] group* find(std::uint32_t id) noexcept;
    void remove(std::uint32_t id) noexcept;
    void clear() noexcept;

    [[nodiscard]] std::uint64_t total_bytes() const noexcept { return total_bytes_; }
    [[nodiscard]] std::size_t item_count() const noexcept { return item_count_; }

private:
    [[nodiscard]] bool fMakeRoomInCache(std::uint64_t bytes, std::uint64_t budget) noexcept;
    [[nodiscard]] bool too_full_for(std::uint64_t bytes, std::uint64_t budget) const noexcept
    {
        return total_bytes_ + bytes >= budget || item_count_ >= most_items;
    }
    void forget(const image_cache_item& item) noexcept;

    group_list groups_;
    std::uint64_t total_bytes_ = 0;
    std::size_t item_count_ = 0;
};

} // namespace klv
