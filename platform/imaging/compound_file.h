#pragma once

#include "platform/imaging/image_io.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <gsf/gsf.h>

namespace klv::imaging {

struct release_object {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class Object> using owned_object = std::unique_ptr<Object, release_object>;

/// A stream of a compound file.
class compound_stream {
public:
    explicit compound_stream(owned_object<GsfInput> input)
        : input_(std::move(input))
    {
    }
    [[nodiscard]] std::uint64_t size() const
    {
        return static_cast<std::uint64_t>(gsf_input_size(input_.get()));
    }
    /// Reads count bytes at an offset; false when they are not there.
    [[nodiscard]] bool read(std::uint64_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) const;

private:
    owned_object<GsfInput> input_;
};

/// A storage of a compound file: the root or one inside.
class compound_storage {
public:
    /// The root of the file that in stands for. in must outlive what is opened inside.
    [[nodiscard]] static std::optional<compound_storage> root_of(image_io& in);

    [[nodiscard]] std::optional<compound_storage> storage(const char* name) const;
    [[nodiscard]] std::optional<compound_stream> stream(const char* name) const;

private:
    explicit compound_storage(owned_object<GsfInfile> file)
        : file_(std::move(file))
    {
    }
    [[nodiscard]] owned_object<GsfInput> child(const char* name) const;

    owned_object<GsfInfile> file_;
};

} // namespace klv::imaging
