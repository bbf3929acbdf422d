#pragma once

namespace klv {

class vDEVICE;
class vSHAPE;

/// Strokes a shape with the device's current line: the line engine's whole operation. The ends of an open
/// shape get their arrowheads, and the line keeps clear of them.
void DrawOutline(vDEVICE& device, const vSHAPE& shape) noexcept;

} // namespace klv
