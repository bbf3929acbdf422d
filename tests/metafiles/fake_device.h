#pragma once

#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/core/collection.h"
#include "klv/core/string.h"
#include "klv/devices/device.h"

#include <cstdio>
#include <string>
#include <vector>

namespace klv {

inline std::string text_of(const vPOINT& p) { return std::to_string(p.x) + "," + std::to_string(p.y); }

inline std::string text_of(const vRECT& r) { return text_of(r.TopLeft()) + "," + text_of(r.BottomRight()); }

/// Points with the marks that matter: M start, L line, C curve start, c control, Z closed.
inline std::string text_of(const vSHAPE& shape)
{
    std::string text;
    for (const point_record& p : shape.records()) {
        const bool closes = p.has(point_flags::last) && p.has(point_flags::segment);
        text += p.has(point_flags::first)  ? " M"
            : p.has(point_flags::control)  ? " c"
            : p.has(point_flags::curve_to) ? " C"
                                           : " L";
        text += text_of(p.point()) + (closes ? "Z" : "");
    }
    return text.empty() ? text : text.substr(1);
}

/// A device without a context that writes down every call it gets, one line each.
class fake_device : public vDEVICE {
public:
    std::vector<std::string> calls;

    std::string all() const
    {
        std::string text;
        for (const std::string& call : calls)
            text += call + "\n";
        return text;
    }
    /// The calls between the PushState and PopState that every playback makes.
    std::string inner() const
    {
        std::string text;
        for (std::size_t i = 1; i + 1 < calls.size(); ++i)
            text += calls[i] + "\n";
        return text;
    }

    using vDEVICE::ClipArea;
    using vDEVICE::DrawDIB;
    using vDEVICE::DrawLine;
    using vDEVICE::FillSpec;
    using vDEVICE::FontSpec;
    using vDEVICE::LineSpec;

    void PushState() noexcept override { calls.push_back("PushState"); }
    void PopState() noexcept override { calls.push_back("PopState"); }
    void PushLineSpec() noexcept override { calls.push_back("PushLineSpec"); }
    void PopLineSpec() noexcept override { calls.push_back("PopLineSpec"); }
    void PushFillSpec() noexcept override { calls.push_back("PushFillSpec"); }
    void PopFillSpec() noexcept override { calls.push_back("PopFillSpec"); }
    void PushFontSpec() noexcept override { calls.push_back("PushFontSpec"); }
    void PopFontSpec() noexcept override { calls.push_back("PopFontSpec"); }
    void PushClipArea() noexcept override { calls.push_back("PushClipArea"); }
    void PopClipArea() noexcept override { calls.push_back("PopClipArea"); }
    void LineSpec(const vLINESPEC& s) noexcept override
    {
        calls.push_back("LineSpec " + std::to_string(s.Width()) + " " + colour(s.Colour()));
    }
    void FillSpec(const vFILLSPEC& s) noexcept override
    {
        calls.push_back("FillSpec " + std::to_string(s.Type()) + " " + colour(s.ColourFrom()) + " "
            + colour(s.ColourTo()) + " " + std::to_string(s.Angle()()) + " " + text_of(s.Centre()));
    }
    void FontSpec(const vFONTSPEC& s) noexcept override
    {
        calls.push_back(std::string("FontSpec ") + s.Name()() + " " + std::to_string(s.Height()));
    }
    void ClipArea(const vSHAPE& shape, int mode) noexcept override
    {
        calls.push_back("ClipArea " + text_of(shape) + " " + std::to_string(mode));
    }
    void TextTransparency(int on) noexcept override
    {
        calls.push_back("TextTransparency " + std::to_string(on));
    }
    void DrawLine(std::span<const vPOINT> points) noexcept override
    {
        calls.push_back("DrawLine");
        for (const vPOINT& p : points)
            calls.back() += " " + text_of(p);
    }
    void DrawShape(const vSHAPE& shape) noexcept override
    {
        calls.push_back("DrawShape " + text_of(shape));
        ratio = GetFontRatio();
    }
    void DrawArc(const vRECT& r, const vPOINT& a, const vPOINT& b) noexcept override
    {
        arc("DrawArc", r, a, b);
    }
    void DrawPie(const vRECT& r, const vPOINT& a, const vPOINT& b) noexcept override
    {
        arc("DrawPie", r, a, b);
    }
    void DrawChord(const vRECT& r, const vPOINT& a, const vPOINT& b) noexcept override
    {
        arc("DrawChord", r, a, b);
    }
    int DrawTextA(
        const vSTRING& s, const vRECT& r, vTEXTALIGN align, int, const vPOINT&, double) noexcept override
    {
        calls.push_back(std::string("DrawTextA ") + s() + " " + text_of(r) + " "
            + std::to_string(static_cast<int>(align)));
        return 1;
    }
    int DrawTextOnLine(const vSTRING& s, const vPOINT& start, const short*, int) noexcept override
    {
        calls.push_back(std::string("DrawTextOnLine ") + s() + " " + text_of(start));
        return 1;
    }
    void DrawDIB(const oDIB& dib, oDIBCONTEXT& context, vRECT*, int) noexcept override
    {
        calls.push_back("DrawDIB " + std::to_string(dib.Width()) + "x" + std::to_string(dib.Height()) + " at "
            + text_of(context.GetDstRect()) + " of " + text_of(context.GetSrcRect()) + " transparency "
            + std::to_string(context.GetTransparency()));
    }

    vREAL ratio; ///< the font ratio at the last shape

private:
    static std::string colour(const vCOLOUR& c)
    {
        char text[8];
        std::snprintf(text, sizeof text, "%06X", c.PackedRGB() & 0xFFFFFFu);
        return text;
    }
    void arc(const char* name, const vRECT& r, const vPOINT& start, const vPOINT& end)
    {
        calls.push_back(std::string(name) + " " + text_of(r) + " " + text_of(start) + " " + text_of(end));
    }
};

} // namespace klv
