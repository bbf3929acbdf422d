#include "platform/imaging/compound_file.h"

namespace klv::imaging {

namespace {

void no_message(const char*, GLogLevelFlags, const char*, void*) { }

/// Starts libgsf once in the process; what it says about damaged files goes nowhere.
void start_library()
{
    static const bool started = [] {
        gsf_init();
        for (const char* const domain : {"libgsf", "libgsf:msole"})
            g_log_set_handler(domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), no_message, nullptr);
        return true;
    }();
    (void)started;
}

struct free_bytes {
    void operator()(std::uint8_t* bytes) const { g_free(bytes); }
};

/// libgsf's view of a file: one of the file system as it lies there, else a copy in memory.
owned_object<GsfInput> input_of(image_io& in)
{
    if (std::FILE* const file = in.file())
        return owned_object<GsfInput>(gsf_input_stdio_new_FILE("image", file, TRUE));
    const std::vector<std::uint8_t> bytes = in.read_all();
    std::unique_ptr<std::uint8_t, free_bytes> copy(
        static_cast<std::uint8_t*>(g_try_malloc(bytes.size() + 1)));
    if (!copy)
        return nullptr;
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return owned_object<GsfInput>(
        gsf_input_memory_new(copy.release(), static_cast<gsf_off_t>(bytes.size()), TRUE));
}

} // namespace

bool compound_stream::read(std::uint64_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) const
{
    if (offset > size() || count > size() - offset)
        return false;
    bytes.resize(count);
    return count == 0
        || (!gsf_input_seek(input_.get(), static_cast<gsf_off_t>(offset), G_SEEK_SET)
            && gsf_input_read(input_.get(), count, bytes.data()));
}

std::optional<compound_storage> compound_storage::root_of(image_io& in)
{
    start_library();
    const owned_object<GsfInput> input = input_of(in);
    if (!input)
        return std::nullopt;
    GError* error = nullptr;
    owned_object<GsfInfile> root(gsf_infile_msole_new(input.get(), &error));
    g_clear_error(&error);
    if (!root)
        return std::nullopt;
    return compound_storage(std::move(root));
}

owned_object<GsfInput> compound_storage::child(const char* name) const
{
    return owned_object<GsfInput>(gsf_infile_child_by_name(file_.get(), name));
}

std::optional<compound_storage> compound_storage::storage(const char* name) const
{
    owned_object<GsfInput> found = child(name);
    if (!found || !GSF_IS_INFILE(found.get()) || gsf_infile_num_children(GSF_INFILE(found.get())) < 0)
        return std::nullopt;
    return compound_storage(owned_object<GsfInfile>(GSF_INFILE(found.release())));
}

std::optional<compound_stream> compound_storage::stream(const char* name) const
{
    owned_object<GsfInput> found = child(name);
    if (!found)
        return std::nullopt;
    return compound_stream(std::move(found));
}

} // namespace klv::imaging
