#pragma once

#include "klv/attributes/fill_spec.h"

#include <cstdint>
#include <optional>
#include <span>

namespace klv {

/// The comment of 28 bytes in which the library's own writer names a graduated fill. Empty for other
/// comments.
std::optional<vFILLSPEC> read_wmf_fill_comment(std::span<const std::uint8_t> comment);

} // namespace klv
