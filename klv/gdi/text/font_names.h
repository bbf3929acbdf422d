#pragma once

#include <string_view>

namespace klv::gdi {

/// The family to look for when a picture names a face that never was an outline font of its own (the
/// raster and stroke faces and the short names of early versions), else the name itself.
std::string_view outline_family(std::string_view face);

/// A family of about the same widths, for a face that may not be installed and that the system's font
/// configuration has no metric-compatible one for. \return null when none is known
const char* similar_family(std::string_view face);

} // namespace klv::gdi
