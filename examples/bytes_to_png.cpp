// Bytes in memory to the bytes of a PNG, no file involved: bytes_to_png <IN >OUT.png

#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>

#include <klv/rendering/document.h>
#include <klv/rendering/save.h>
#include <klv/streams/memory_stream.h>

using namespace klv;

// Empty when the bytes are of no picture that can be read.
static std::string png_of(const std::string& bytes)
{
    document opened;
    if (!open_bytes({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, opened).ok())
        return {};
    save_options options;
    options.format = "png";
    vMEMSTREAM out;
    if (!save(opened, out, options).ok())
        return {};
    std::string png(out.Size(), '\0');
    out.MoveFromStart(0);
    out.ReadPlain(reinterpret_cast<std::uint8_t*>(png.data()), out.Size());
    return png;
}

int main()
{
    const std::string png = png_of({std::istreambuf_iterator<char>(std::cin), {}});
    std::cout << png << std::flush;
    return png.empty() || !std::cout ? 1 : 0;
}
