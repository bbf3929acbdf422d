#pragma once

#include "klv/base/memory.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/core/point.h"
#include "klv/core/string.h"
#include "klv/filters/vector_filter.h"
#include "klv/metafiles/metafile.h"
#include "klv/rendering/render_status.h"
#include "klv/streams/stream.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace klv {

class oPROGRESS;

/// The extension of the recorded picture's own files.
inline constexpr std::string_view recorded_picture_format = "VMM";

/// What a file holds: a recorded picture or a bitmap, never both.
struct document {
    document() noexcept = default;
    document(document&&) noexcept = default;
    document& operator=(document&& other) noexcept;
    ~document() = default;

    vSTRING format; ///< extension of the format in upper case: "WMF", "VMM", "PNG", ...
    vSTRING description; ///< of the format
    std::unique_ptr<vSTREAM> stream; ///< outlives the picture, which may lie in it
    std::unique_ptr<vMETAFILE> picture;
    std::unique_ptr<oMEMDIB> bitmap;
    /// Of a file that holds its image in several sizes, smallest first.
    std::vector<vSIZE, vALLOCATOR<vSIZE>> resolutions;
    vSTRING warning; ///< what was wrong although the result is of use; empty when nothing was
};

struct open_options {
    oREADING_LEVEL level = oREADING_LEVEL::faithful;
    /// Which resolution to read of a file that holds its image in several, 0 the smallest; nothing for the
    /// format's own choice.
    std::optional<std::uint32_t> resolution;
    oPROGRESS* progress = nullptr; ///< told how far the reading is, and asked whether to stop; not owned
};

/// Opens and reads a file of any readable format. Only a done one changes what `into` holds.
render_status open_file(std::string_view name, document& into, const open_options& options = {}) noexcept;
/// The same for bytes in memory, which are copied. A name with an extension helps with formats that nothing
/// else tells.
render_status open_bytes(std::span<const std::uint8_t> bytes, document& into, std::string_view name = {},
    const open_options& options = {}) noexcept;
/// The same for a stream, from its start.
render_status open_stream(
    std::unique_ptr<vSTREAM> stream, document& into, const open_options& options = {}) noexcept;

} // namespace klv
