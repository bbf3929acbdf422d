#include "platform/imaging/compound_file.h"

namespace klv::imaging {

namespace {

/// Where GLib counts an offset from, in its own numbers.
constexpr int from_start = 1;

struct free_bytes {
    void operator()(std::uint8_t* bytes) const { gsf_library::get()->g_free(bytes); }
};

/// libgsf's view of a file: one of the file system as it lies there, else a copy in memory.
owned_object input_of(image_io& in)
{
    const gsf_library::functions& gsf = *gsf_library::get();
    if (std::FILE* const file = in.file())
        return owned_object(gsf.gsf_input_stdio_new_FILE("image", file, true));
    const std::size_t size = in.size();
    std::unique_ptr<std::uint8_t, free_bytes> bytes(static_cast<std::uint8_t*>(gsf.g_try_malloc(size + 1)));
    if (!bytes)
        return nullptr;
    const auto got = static_cast<std::int64_t>(in.read({bytes.get(), size}));
    return owned_object(gsf.gsf_input_memory_new(bytes.release(), got, true));
}

} // namespace

bool compound_stream::read(std::uint64_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) const
{
    if (offset > size() || count > size() - offset)
        return false;
    bytes.resize(count);
    const gsf_library::functions& gsf = *gsf_library::get();
    return count == 0
        || (!gsf.gsf_input_seek(input_.get(), static_cast<std::int64_t>(offset), from_start)
            && gsf.gsf_input_read(input_.get(), count, bytes.data()));
}

std::optional<compound_storage> compound_storage::root_of(image_io& in)
{
    const owned_object input = input_of(in);
    if (!input)
        return std::nullopt;
    owned_object root(gsf_library::get()->gsf_infile_msole_new(input.get(), nullptr));
    if (!root)
        return std::nullopt;
    return compound_storage(std::move(root));
}

owned_object compound_storage::child(const char* name) const
{
    return owned_object(gsf_library::get()->gsf_infile_child_by_name(directory_.get(), name));
}

std::optional<compound_storage> compound_storage::storage(const char* name) const
{
    // The streams of a compound file are directories too, without a count of children.
    owned_object found = child(name);
    if (!found || gsf_library::get()->gsf_infile_num_children(found.get()) < 0)
        return std::nullopt;
    return compound_storage(std::move(found));
}

std::optional<compound_stream> compound_storage::stream(const char* name) const
{
    owned_object found = child(name);
    if (!found)
        return std::nullopt;
    return compound_stream(std::move(found));
}

} // namespace klv::imaging
