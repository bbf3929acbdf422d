#pragma once

#include "klv/gdi/state/drawing_state.h"
#include "klv/gdi/text/font.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>

namespace klv::gdi {

/// The selected font, realised at the scale of the mapping.
struct selected_font {
    const font_object* object = nullptr;
    font_scale scale;
    std::shared_ptr<realised_font> font; ///< null when there is no usable one
};
selected_font find_selected_font(const drawing_state& state);

/// Distances of text, in device pixels along the baseline.
using pixels = std::int64_t;

/// The pixels of logical distances that are added up: the sum is scaled, so that rounding doesn't build up.
inline pixels scaled(std::int64_t logical, double scale)
{
    constexpr double limit = 1e12;
    return std::llround(std::clamp(static_cast<double>(logical) * scale, -limit, limit));
}

/// A string as it is set: the advances of its characters with the state's spacing, or those given (logical
/// units, one for each byte).
class text_run {
public:
    text_run(const drawing_state& state, const selected_font& selected, std::string_view text, const LONG* dx)
        : state_(state)
        , font_(*selected.font)
        , scale_(selected.scale)
        , text_(text)
        , dx_(dx)
    {
    }

    /// Calls visit(character, pixels from the start) for each character. \return the whole length
    template <class Visit> pixels for_each(Visit&& visit) const
    {
        pixels natural = 0;
        std::int64_t added = 0; // logical
        std::int64_t breaks = 0;
        std::size_t at = 0;
        while (at < text_.size()) {
            const text_character c = font_.next(text_.substr(at));
            visit(c, natural + scaled(added, scale_.x));
            if (dx_) {
                for (std::size_t i = at; i < at + c.bytes; ++i)
                    added += dx_[i];
            } else {
                natural += font_.advance(c);
                added += state_.character_extra;
                added += c.code == break_character ? justification(breaks++) : 0;
            }
            at += c.bytes;
        }
        return natural + scaled(added, scale_.x);
    }
    [[nodiscard]] pixels length() const
    {
        return for_each([](const text_character&, pixels) {});
    }

private:
    static constexpr std::uint16_t break_character = ' ';

    // What the n-th break gets of the extra space: the shares add up to it exactly.
    [[nodiscard]] std::int64_t justification(std::int64_t n) const
    {
        if (n >= state_.justify_count)
            return 0;
        const std::int64_t extra = state_.justify_extra;
        return extra * (n + 1) / state_.justify_count - extra * n / state_.justify_count;
    }

    const drawing_state& state_;
    realised_font& font_;
    font_scale scale_;
    std::string_view text_;
    const LONG* dx_;
};

} // namespace klv::gdi
