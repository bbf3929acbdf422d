#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/metafiles/metafile.h"
#include "klv/rendering/render.h"

#include <optional>
#include <string>

namespace klv::tool {

/// The extension of the recorded picture's files, as extension_of answers it.
inline const std::string recorded_picture = "VMM";

/// The extension of a file name in upper case, without the dot; empty when there is none.
std::string extension_of(const std::string& file);

struct output_options {
    std::string format; ///< extension of the format in upper case; empty for that of the file's name, or PNG
    std::optional<int> depth; ///< bits per pixel that a bitmap is reduced to; nothing for what it has
    std::string input; ///< what is drawn, for the progress bar; empty for the output itself
    render_options render; ///< how a picture becomes pixels
};

/// Writes a picture; "-" is standard output. A file that can't be written in full is removed. Throws failure.
void write_output(vMETAFILE& picture, const std::string& file, const output_options& options);
/// The same for a bitmap, whose colours are reduced where they have to be.
void write_output(oMEMDIB& bitmap, const std::string& file, const output_options& options);

} // namespace klv::tool
