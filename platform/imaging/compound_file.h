#pragma once

#include "platform/imaging/gsf_library.h"
#include "platform/imaging/image_io.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace klv::imaging {

struct release_object {
    void operator()(gsf_library::object object) const { gsf_library::get()->g_object_unref(object); }
};
/// An input or a directory; none exists without the library.
using owned_object = std::unique_ptr<void, release_object>;

/// A stream of a compound file.
class compound_stream {
public:
    explicit compound_stream(owned_object input)
        : input_(std::move(input))
    {
    }
    [[nodiscard]] std::uint64_t size() const
    {
        return static_cast<std::uint64_t>(gsf_library::get()->gsf_input_size(input_.get()));
    }
    /// Reads count bytes at an offset; false when they are not there.
    [[nodiscard]] bool read(std::uint64_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) const;

private:
    owned_object input_;
};

/// A storage of a compound file: the root or one inside.
class compound_storage {
public:
    /// Whether compound files can be opened at all.
    [[nodiscard]] static bool available() { return gsf_library::get() != nullptr; }
    /// The root of the file that in stands for. in must outlive what is opened inside.
    [[nodiscard]] static std::optional<compound_storage> root_of(image_io& in);

    [[nodiscard]] std::optional<compound_storage> storage(const char* name) const;
    [[nodiscard]] std::optional<compound_stream> stream(const char* name) const;

private:
    explicit compound_storage(owned_object directory)
        : directory_(std::move(directory))
    {
    }
    [[nodiscard]] owned_object child(const char* name) const;

    owned_object directory_;
};

} // namespace klv::imaging
