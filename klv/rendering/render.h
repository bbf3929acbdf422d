#pragma once

#include "klv/colour/colour.h"
#include "klv/core/point.h"
#include "klv/rendering/pixels.h"
#include "klv/rendering/render_status.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace klv {

class oDIB;
class oMEMDIB;
class oPROGRESS;
class vMETAFILE;
struct document;

struct render_options {
    int width = 0; ///< pixels, at most 32767; 0 to follow the height, or the picture's own size
    int height = 0; ///< the same, 0 to follow the width
    bool fit = false; ///< width and height are a box that the picture fills in proportion, not its size
    /// Pixels for each inch of the own size (16 to 4096 pixels on the longer side); 0 for 96, and for a
    /// bitmap's own pixels.
    int dpi = 0;
    /// Along each axis of a pixel, at most 16: 1 for aliased figures, 0 for 4, or fewer where a large page is
    /// painted over many times.
    int samples = 0;
    /// What the picture is drawn on. Without a ground, pixels are premultiplied by their alpha: 0 where
    /// nothing was drawn. What a drawing mode makes from the ground is opaque then, and looks as on white.
    std::optional<vCOLOUR> ground = vCOLOUR(255, 255, 255);
    pixel_order order = pixel_order::bgra;
    oPROGRESS* progress = nullptr; ///< told how far the drawing is, and asked whether to stop; not owned
};

/// What is drawn: a picture, or a bitmap, which is scaled. It is not owned.
class drawable {
public:
    drawable(vMETAFILE& picture) noexcept
        : picture_(&picture)
    {
    }
    drawable(const oDIB& bitmap) noexcept
        : bitmap_(&bitmap)
    {
    }
    drawable(const document& opened) noexcept;

    [[nodiscard]] vMETAFILE* picture() const noexcept { return picture_; }
    [[nodiscard]] const oDIB* bitmap() const noexcept { return bitmap_; }

private:
    vMETAFILE* picture_ = nullptr;
    const oDIB* bitmap_ = nullptr;
};

/// Size in pixels that the options ask for.
[[nodiscard]] vSIZE rendered_size(const drawable& what, const render_options& options) noexcept;

/// Draws into an image of its own. Text is drawn as text. After a failure the image is as it was.
render_status render(const drawable& what, const render_options& options, rendered_image& into) noexcept;
/// Draws into the caller's pixels, which say the size and the order in place of the options. After a failure
/// they hold anything.
render_status render(const drawable& what, const render_options& options, const pixel_view& into) noexcept;
/// The same for what a file, or bytes of a file, hold; they are read at the faithful level.
render_status render_file(
    std::string_view name, const render_options& options, rendered_image& into) noexcept;
render_status render_bytes(
    std::span<const std::uint8_t> bytes, const render_options& options, rendered_image& into) noexcept;

/// Draws a bitmap for the writers of formats: of 24 bits, on white when there is no ground. A picture that
/// only holds a bitmap gives that one, in its own depth, unless the options say a size.
render_status render_bitmap(const drawable& what, const render_options& options, oMEMDIB& into) noexcept;

} // namespace klv
