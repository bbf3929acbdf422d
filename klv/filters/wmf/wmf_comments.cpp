#include "klv/filters/wmf/wmf_comments.h"

#include "klv/base/byte_reader.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace klv {
namespace {

constexpr std::size_t fill_comment_size = 28;
constexpr std::string_view fill_comment_text("ZYNfill\0", 8);

// The writer's C, M, Y, K bytes hold per cents; black is halved where the inks leave no room for it.
vCOLOUR read_comment_colour(byte_reader& in)
{
    constexpr int full_tint = 100 * 255;
    constexpr int per_cent_of_tint = 20000;
    constexpr int crowded = 600;
    const auto ink = [&in] { return in.u8() * full_tint / per_cent_of_tint; };
    int c = ink();
    int m = ink();
    int y = ink();
    int k = ink();
    if (c + m + y > crowded)
        k /= 2;
    c += k;
    m += k;
    y += k;
    const int top = std::max({255, c, m, y});
    const auto light = [top](int i) { return static_cast<unsigned char>(std::min(top - i, 255)); };
    return vCOLOUR(light(c), light(m), light(y));
}

vFILLTYPE fill_type_of_comment(std::uint8_t kind)
{
    switch (kind) {
    case 3:
        return vFILL_LINEAR;
    case 4:
        return vFILL_LINEAR_LOGARITHMIC;
    case 5:
        return vFILL_LINEAR_TWO_WAY;
    case 6:
        return vFILL_RADIAL;
    case 7:
        return vFILL_RADIAL_QUADRATIC;
    default:
        return vFILL_NONE;
    }
}

} // namespace

std::optional<vFILLSPEC> read_wmf_fill_comment(std::span<const std::uint8_t> comment)
{
    if (comment.size() != fill_comment_size
        || std::memcmp(comment.data(), fill_comment_text.data(), fill_comment_text.size() - 1) != 0)
        return std::nullopt;
    byte_reader in(comment.subspan(fill_comment_text.size()));
    const auto type = fill_type_of_comment(in.u8());
    in.skip(1);
    const auto angle = in.i16le();
    const auto from = read_comment_colour(in);
    const auto to = read_comment_colour(in);
    return vFILLSPEC(type, from, to, vANGLE(angle), vFILL_ALTERNATE, vPOINT(0, 0));
}

} // namespace klv
