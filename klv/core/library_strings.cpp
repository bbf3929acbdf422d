#include "klv/core/library_strings.h"

namespace klv {

namespace {

// In Windows-1252, as all string resources.
constexpr string_resource strings[] = {
    {library_string::fatal_error,
        "Erreur irr\xE9"
        "cup\xE9rable"},
    {library_string::error, "Erreur"},
    {library_string::warning, "Avertissement"},
    {library_string::debugging,
        "D\xE9"
        "bogage"},
    {library_string::out_of_memory, "M\xE9moire insuffisante"},
    {library_string::nearly_out_of_memory,
        "la m\xE9moire est presque satur\xE9"
        "e"},
    {33000, "CGM Metafile"},
    {33001, "GEM Metafile"},
    {33002, "Windows Metafile"},
    {33003, "AutoCAD Slide Metafile"},
    {33004, "Lotus Pic Metafile"},
    {33005, " Windows enhanced Metafile"},
    {33006, "Windows Bitmap"},
    {33007, "GIF Bitmap "},
    {33008, "JPEG Bitmap "},
    {33009, "Targa Bitmap"},
    {33010, "PCX Bitmap"},
    {33011, "TIFF Bitmap"},
    {33012, "Encapsulated Postscript"},
    {33013, "Bitmap PNG"},
    {33014, "Photo CD Bitmap "},
    {33015, "Flash Pix Bitmap"},
    {33016, "Photoshop Bitmap"},
};

} // namespace

std::span<const string_resource> library_strings() noexcept { return strings; }

} // namespace klv
