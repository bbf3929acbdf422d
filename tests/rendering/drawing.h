#pragma once

#include "klv/metafiles/metafile.h"
#include "klv/rendering/render.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace klv::test {

inline void use_solid(vMETAFILE& picture, const vCOLOUR& colour)
{
    picture.LineSpec(vLINESPEC(vLINE_NONE, colour, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
    picture.FillSpec(vFILLSPEC(vFILL_SOLID, colour, colour, vANGLE(), vFILL_ALTERNATE, vPOINT()));
}

/// Closes a picture of width x height units on a page of as many tenths of a millimetre.
inline void close_page(vMETAFILE& picture, int width, int height)
{
    picture.PhysicalExtents(100 * width, 100 * height);
    picture.LogicalExtents(0, width, 0, height);
    picture.EndMetaFile();
}

inline rendered_image drawn(const drawable& what, const render_options& options)
{
    rendered_image image;
    const auto status = render(what, options, image);
    EXPECT_TRUE(status.ok()) << status.words();
    return image;
}

/// The bytes of a pixel in their order.
inline std::vector<int> pixel(const rendered_image& image, int x, int y)
{
    const auto size = static_cast<std::size_t>(bytes_per_pixel(image.order()));
    const auto bytes = image.row(y).subspan(size * static_cast<std::size_t>(x), size);
    return {bytes.begin(), bytes.end()};
}

} // namespace klv::test
