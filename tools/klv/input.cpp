#include "tools/klv/input.h"

#include "klv/streams/memory_stream.h"

#include "tools/klv/failure.h"
#include "tools/klv/progress_bar.h"

#include <array>
#include <cstdio>
#include <memory>
#include <utility>

namespace klv::tool {
namespace {

std::unique_ptr<vSTREAM> read_standard_input()
{
    auto stream = std::unique_ptr<vSTREAM>(new vMEMSTREAM(vSTRING("standard input")));
    std::array<std::uint8_t, 1 << 16> chunk{};
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), stdin))
        if (!stream || stream->WritePlain(chunk.data(), static_cast<std::uint32_t>(got)) != got)
            throw failure("memory ran out");
    return stream;
}

} // namespace

document open_input(const std::string& file, std::optional<std::uint32_t> resolution)
{
    progress_bar progress("reading " + file);
    open_options options;
    options.resolution = resolution;
    options.progress = &progress;
    document opened;
    require(
        file == "-" ? open_stream(read_standard_input(), opened, options) : open_file(file, opened, options));
    return opened;
}

} // namespace klv::tool
