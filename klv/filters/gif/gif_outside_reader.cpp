#include "klv/filters/gif/gif_outside_reader.h"

#include "klv/base/byte_reader.h"
#include "klv/bitmaps/dib.h"
#include "klv/formats/dib_header.h"
#include "klv/platform/module_table.h"
#include "klv/platform/system/global_memory.h"
#include "klv/streams/stream.h"

#include <array>

namespace klv {

namespace {

constexpr const char* module_name = "IEPICIMP.DLL";
constexpr const char* function_name = "ImportGIF";
using import_function = HGLOBAL (*)(const char* name);

constexpr std::int32_t assumed_dpi = 150;

/// Gives the stream's file free, for the time of the import.
class released_file {
public:
    explicit released_file(vSTREAM& stream)
        : stream_(stream)
    {
        stream_.Close();
    }
    released_file(const released_file&) = delete;
    released_file& operator=(const released_file&) = delete;
    ~released_file() { stream_.ReOpen(); }

private:
    vSTREAM& stream_;
};

HGLOBAL import(HINSTANCE module, vSTREAM& in)
{
    const auto function = reinterpret_cast<import_function>(GetProcAddress(module, function_name));
    if (!function)
        return nullptr;
    const vSTRING name = in.Name();
    const released_file released(in);
    return function(name());
}

/// A packed bitmap without compression. False, and the bitmap as it was, when the block is too small for it.
bool take_packed_bitmap(std::span<const std::uint8_t> block, oDIB& bitmap)
{
    byte_reader in(block);
    const auto stored = dib_header::read(in);
    if (!stored || stored->size != dib_header::info_size)
        return false;
    const std::uint16_t bits = stored->bits;
    const oDIBHEADER header(stored->width, stored->height, assumed_dpi, assumed_dpi, model_of_bits(bits));
    std::array<RGBQUAD, 256> colours{};
    const std::uint16_t count = bits <= 8 ? static_cast<std::uint16_t>(1U << bits) : std::uint16_t{0};
    if (read_colour_table(in, stored->colour_bytes(), std::span(colours).first(count)) != count)
        return false;
    const auto pixels = in.bytes(header.Size());
    if (header.ColourDepth() != bits || header.Size() == 0 || !in.ok())
        return false;
    return (count == 0 || bitmap.SetPalette(oDIBPALETTE(colours.data(), count))) && bitmap.SetHeader(header)
        && bitmap.SetImageLines(pixels.data(), header.ColourModel(), 0, stored->height);
}

} // namespace

oFILTER_STATUS read_gif_outside(vSTREAM& in, oDIB& bitmap) noexcept
{
    const HINSTANCE module = LoadLibraryA(module_name);
    if (!module)
        return oFILTER_FAILED;
    oFILTER_STATUS status = oFILTER_FAILED;
    if (const HGLOBAL block = import(module, in)) {
        if (const auto* const bytes = static_cast<const std::uint8_t*>(GlobalLock(block))) {
            if (take_packed_bitmap({bytes, GlobalSize(block)}, bitmap))
                status = oFILTER_OK;
            GlobalUnlock(block);
        }
        GlobalFree(block);
    }
    FreeLibrary(module);
    return status;
}

} // namespace klv
