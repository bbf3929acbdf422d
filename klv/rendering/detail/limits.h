#pragma once

namespace klv {

/// The longest side of what is drawn, pixels.
inline constexpr int longest_side = 32767;
/// The most samples along an axis of a pixel.
inline constexpr int most_samples = 16;

[[nodiscard]] constexpr bool is_side(int pixels) noexcept { return pixels >= 1 && pixels <= longest_side; }

} // namespace klv
