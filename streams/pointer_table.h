#pragma once

#include <cstdint>

namespace klv {

class vOBJECT;

/// The process-wide table of objects that travel through 4-byte stream fields. A token is meaningful only
/// within the running process. \return 0 for null and when memory is out; one object, one token.
std::uint32_t token_of(const vOBJECT* object) noexcept;

/// \return the object of a token that token_of gave; null for 0 and for any other number. The table does not
/// know whether the object still lives.
vOBJECT* pointer_of(std::uint32_t token) noexcept;

} // namespace klv
