#include "platform/imaging/gsf_library.h"

#include <array>

namespace klv::imaging {

namespace {

constexpr std::array library_names{"libgsf-1.so.114"};
constexpr int every_level = ~3;

void no_message(const char*, int, const char*, void*) { }

} // namespace

bool gsf_library::load()
{
    runtime_library library;
    if (!library.load(library_names))
        return false;
#define KLV_FIND(NAME) library.find(#NAME, call_.NAME)
    const bool complete = KLV_FIND(gsf_init) && KLV_FIND(gsf_input_stdio_new_FILE)
        && KLV_FIND(gsf_input_memory_new) && KLV_FIND(gsf_input_size) && KLV_FIND(gsf_input_seek)
        && KLV_FIND(gsf_input_read) && KLV_FIND(gsf_infile_msole_new) && KLV_FIND(gsf_infile_child_by_name)
        && KLV_FIND(gsf_infile_num_children) && KLV_FIND(g_object_unref) && KLV_FIND(g_try_malloc)
        && KLV_FIND(g_free) && KLV_FIND(g_log_set_handler);
#undef KLV_FIND
    if (!complete)
        return false;
    call_.gsf_init();
    // What it says about damaged files goes nowhere.
    for (const char* const domain : {"libgsf", "libgsf:msole"})
        call_.g_log_set_handler(domain, every_level, no_message, nullptr);
    return true;
}

const gsf_library::functions* gsf_library::get()
{
    static gsf_library library;
    static bool loaded = false;
    loaded = loaded || library.load();
    return loaded ? &library.call_ : nullptr;
}

} // namespace klv::imaging
