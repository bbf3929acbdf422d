#pragma once

#include "klv/rendering/document.h"

#include <cstdint>
#include <optional>
#include <string>

namespace klv::tool {

/// Opens and reads a file of any readable format; "-" is standard input. Throws failure.
/// \param resolution which one to read of a file that holds its image in several, 0 the smallest; nothing
/// for the format's own choice
document open_input(const std::string& file, std::optional<std::uint32_t> resolution = {});

} // namespace klv::tool
