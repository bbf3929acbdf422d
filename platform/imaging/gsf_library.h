#pragma once

#include "platform/imaging/runtime_library.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace klv::imaging {

/// libgsf, a file system in a file, looked for by name when a compound file is opened. It brings twenty
/// libraries with it, which would cost every other format its start.
class gsf_library {
public:
    /// The C interface, of libgsf and of GLib beneath it. Objects are pointers to nothing we know: inputs, of
    /// which directories are a kind.
    using object = void*;
    struct functions {
        void (*gsf_init)();
        object (*gsf_input_stdio_new_FILE)(const char* name, std::FILE*, int keep_open);
        object (*gsf_input_memory_new)(const std::uint8_t* bytes, std::int64_t size, int owned);
        std::int64_t (*gsf_input_size)(object);
        int (*gsf_input_seek)(object, std::int64_t offset, int origin); ///< true when it failed
        const std::uint8_t* (*gsf_input_read)(object, std::size_t count, std::uint8_t* bytes);
        object (*gsf_infile_msole_new)(object input, void* error);
        object (*gsf_infile_child_by_name)(object directory, const char* name);
        int (*gsf_infile_num_children)(object directory); ///< negative for streams
        void (*g_object_unref)(object);
        void* (*g_try_malloc)(std::size_t);
        void (*g_free)(void*);
        unsigned (*g_log_set_handler)(const char* domain, int levels,
            void (*handler)(const char*, int, const char*, void*), void* user);
    };

    /// The library, loaded and started on the first call; null when it is not installed.
    [[nodiscard]] static const functions* get();

private:
    [[nodiscard]] bool load();

    functions call_{};
};

} // namespace klv::imaging
