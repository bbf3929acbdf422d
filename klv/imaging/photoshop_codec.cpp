#include "klv/imaging/photoshop_layout.h"

namespace klv::imaging {

namespace {

bool recognises(std::span<const std::uint8_t> start)
{
    return start.size() > photoshop::header_size && start[0] == '8' && start[1] == 'B' && start[2] == 'P'
        && start[3] == 'S';
}

} // namespace

const codec photoshop_codec{
    format_photoshop, recognises, photoshop::info, photoshop::load, photoshop::save, nullptr};

} // namespace klv::imaging
