#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/filter.h"
#include "klv/metafiles/metafile.h"
#include "klv/streams/stream.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv::tool {

/// A file that was opened and read: a recorded picture or a bitmap, never both.
struct source {
    std::string format; ///< extension in upper case: "WMF", "VMM", "PNG", ...
    std::string description;
    std::unique_ptr<vSTREAM> stream; ///< outlives the picture, which may lie in it
    std::unique_ptr<vMETAFILE> picture;
    std::unique_ptr<oMEMDIB> bitmap;
    std::vector<vSIZE> resolutions; ///< of a file that holds its image in several, smallest first
    std::string warning; ///< what was wrong although the result is of use; empty when nothing was
};

/// Opens and reads a file of any readable format; "-" is standard input. Throws failure.
/// \param resolution which one to read of a file that holds its image in several, 0 the smallest; nothing
/// for the format's own choice
source open_source(const std::string& file, std::optional<std::uint32_t> resolution = {});

} // namespace klv::tool
