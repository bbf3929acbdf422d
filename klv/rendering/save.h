#pragma once

#include "klv/rendering/render.h"

#include <optional>
#include <string_view>

namespace klv {

class oMEMDIB;
class oPROGRESS;
class vMETAFILE;
class vSTREAM;

struct save_options {
    std::string_view
        format; ///< extension of the format, in any letter case; empty for that of the file's name
    /// Bits per pixel of a bitmap, 1, 4, 8 or 24: its colours are reduced to so many. Nothing to keep what it
    /// has.
    std::optional<int> depth;
    render_options render; ///< how a picture becomes pixels where the format holds pixels
};

/// Whether files of the format with that extension, in any letter case, can be written.
[[nodiscard]] bool is_written(std::string_view format) noexcept;

/// Writes a picture or a bitmap to a file in the format that its extension says; a file that can't be written
/// in full is removed. A bitmap becomes a recorded picture that holds it. Formats without the depth of a
/// bitmap get the next greater one that they have, else their greatest.
render_status save(const drawable& what, std::string_view file, const save_options& options = {}) noexcept;
/// The same onto an empty stream. The options name the format.
render_status save(const drawable& what, vSTREAM& out, const save_options& options) noexcept;

/// Writes a recorded picture in its own form onto an empty stream, as a .vmm file holds it.
render_status write_picture(vMETAFILE& picture, vSTREAM& out) noexcept;
/// Writes a bitmap, whose colours are reduced where they have to be, without a copy of it.
/// \param format extension of the format in upper case
render_status write_bitmap(oMEMDIB& bitmap, std::string_view format, vSTREAM& out,
    std::optional<int> depth = {}, oPROGRESS* progress = nullptr) noexcept;

} // namespace klv
