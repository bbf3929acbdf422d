#include "klv/imaging/png_common.h"

#include <algorithm>
#include <array>

namespace klv::imaging {

namespace {

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

bool png_recognises(std::span<const std::uint8_t> start)
{
    return start.size() >= signature.size() && std::equal(signature.begin(), signature.end(), start.begin());
}

[[noreturn]] void on_error(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void on_warning(png_structp, png_const_charp) { }

} // namespace

png_session::png_session(direction way)
    : way_(way)
{
    const auto create = way == direction::reading ? png_create_read_struct : png_create_write_struct;
    png_ = create(PNG_LIBPNG_VER_STRING, nullptr, on_error, on_warning);
    if (png_)
        info_ = png_create_info_struct(png_);
}

png_session::~png_session()
{
    if (way_ == direction::reading)
        png_destroy_read_struct(&png_, &info_, nullptr);
    else
        png_destroy_write_struct(&png_, &info_);
}

const codec png_codec{format_png, png_recognises, png_info, png_load, png_save, nullptr};

} // namespace klv::imaging
