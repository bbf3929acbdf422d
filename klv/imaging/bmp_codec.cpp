#include "klv/formats/dib_header.h"
#include "klv/imaging/bmp_layout.h"

namespace klv::imaging {

namespace {

bool bmp_recognises(std::span<const std::uint8_t> start)
{
    return start.size() > dib_file_header::stored_size && start[0] == 'B' && start[1] == 'M';
}

} // namespace

const codec bmp_codec{format_bmp, bmp_recognises, bmp::info, bmp::load, bmp::save, nullptr};

} // namespace klv::imaging
