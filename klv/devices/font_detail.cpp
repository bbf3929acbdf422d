#include "klv/devices/font_detail.h"

#include "klv/gdi/gdi.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <tuple>

namespace klv {

namespace {

std::uint8_t byte_of(const vCHAR& character) { return static_cast<std::uint8_t>(character() & 0xFF); }

// A pair names its characters by their signed 8-bit codes widened to 16 bits.
std::uint16_t pair_code(const vCHAR& character)
{
    const std::uint8_t byte = byte_of(character);
    return static_cast<std::uint16_t>(byte < 0x80 ? byte : byte | 0xFF00);
}

// What a font calls the characters of a pair: their plain bytes.
std::pair<int, int> font_codes(const KERNINGPAIR& pair) { return {pair.wFirst & 0xFF, pair.wSecond & 0xFF}; }

std::int16_t short_of(LONG measure)
{
    return static_cast<std::int16_t>(std::clamp<LONG>(measure, INT16_MIN, INT16_MAX));
}

constexpr std::size_t kerning_table_step = 8;

} // namespace

// ---- vFONT ---------------------------------------------------------------------------------------------

vFONT::vFONT(const char* face_name, std::uint8_t charset, std::uint8_t pitch_and_family) noexcept
    : face_name_(face_name)
    , charset_(charset)
    , pitch_and_family_(pitch_and_family)
{
}

const char* vFONT::TypeFaceName() const noexcept { return face_name_(); }

const char* vFONT::Description() const noexcept { return "TrueType"; }

// ---- vFONTDETAIL ---------------------------------------------------------------------------------------

vFONTDETAIL::vFONTDETAIL() noexcept = default;

vFONTDETAIL::vFONTDETAIL(const vFONTSPEC& spec, vDEVICE& device) noexcept
    : vFONTSPEC(spec)
    , device_(&device)
{
}

vFONTDETAIL::vFONTDETAIL(const vFONTDETAIL& other) noexcept
    : vFONTSPEC(other)
{
    copy_measures(other);
}

vFONTDETAIL& vFONTDETAIL::operator=(const vFONTDETAIL& other) noexcept
{
    if (this == &other)
        return *this;
    Font(nullptr, 0);
    vFONTSPEC::operator=(other);
    copy_measures(other);
    return *this;
}

vFONTDETAIL::~vFONTDETAIL()
{
    if (font_)
        DeleteObject(font_);
}

void vFONTDETAIL::copy_measures(const vFONTDETAIL& other) noexcept
{
    device_ = other.device_;
    height_ = other.height_;
    ascent_ = other.ascent_;
    descent_ = other.descent_;
    internal_leading_ = other.internal_leading_;
    external_leading_ = other.external_leading_;
    average_width_ = other.average_width_;
    maximum_width_ = other.maximum_width_;
    pitch_and_family_ = other.pitch_and_family_;
}

void vFONTDETAIL::Font(HFONT font, LONG height) noexcept
{
    Init();
    font_ = font;
    font_height_ = height;
}

void vFONTDETAIL::Init() noexcept
{
    widths_.clear();
    kerning_pairs_.clear();
    font_pairs_.clear();
    font_pairs_read_ = false;
    if (font_)
        DeleteObject(font_);
    font_ = nullptr;
    font_height_ = 0;
    height_ = ascent_ = descent_ = internal_leading_ = external_leading_ = average_width_ = maximum_width_
        = 0;
    pitch_and_family_ = 0;
    first_char_ = last_char_ = 0;
}

void vFONTDETAIL::Init(vDEVICE& device) noexcept
{
    const active_dc dc(device);
    TEXTMETRICA metrics{};
    if (first_char_ != 0 || !GetTextMetricsA(dc, &metrics))
        return;
    height_ = short_of(metrics.tmHeight);
    ascent_ = short_of(metrics.tmAscent);
    descent_ = short_of(metrics.tmDescent);
    internal_leading_ = short_of(metrics.tmInternalLeading);
    external_leading_ = short_of(metrics.tmExternalLeading);
    average_width_ = short_of(metrics.tmAveCharWidth);
    maximum_width_ = short_of(metrics.tmMaxCharWidth);
    pitch_and_family_ = metrics.tmPitchAndFamily;
    try {
        widths_.assign(std::size_t{1} + metrics.tmLastChar - metrics.tmFirstChar, 0);
    } catch (const std::bad_alloc&) {
        return;
    }
    klv::GetCharWidthA(dc, metrics.tmFirstChar, metrics.tmLastChar, widths_.data());
    first_char_ = metrics.tmFirstChar;
    last_char_ = metrics.tmLastChar;
}

// The measures are read on first use, and anew when the device's scale of fonts has changed since.
bool vFONTDETAIL::load() noexcept
{
    if (!device_)
        return false;
    if (first_char_ != 0 && font_height_ == realised_font_height(*this, *device_))
        return true;
    const active_dc dc(*device_); // the font stays selected while it is measured
    device_->vDEVICE::FontSpec(*this);
    if (device_->ActivateFont(0))
        Init(*device_);
    return first_char_ != 0;
}

int vFONTDETAIL::GetCharWidthA(const vCHAR& character) noexcept
{
    const std::uint8_t code = byte_of(character);
    if (!load() || code < first_char_ || code > last_char_)
        return 0;
    return widths_[static_cast<std::size_t>(code - first_char_)];
}

int vFONTDETAIL::GetCharHeight() noexcept { return load() ? height_ : 0; }

int vFONTDETAIL::GetDefStringWidth(vDEVICE& device, const vSTRING& text) noexcept
{
    const active_dc dc(device);
    device.vDEVICE::FontSpec(*this);
    SIZE extent{};
    if (!device.ActivateFont(0) || !GetTextExtentPoint32A(dc, text(), text.Length(), &extent))
        return 0;
    return extent.cx;
}

int vFONTDETAIL::GetKerningValue(KERNINGPAIR& pair) const noexcept
{
    const auto found = std::ranges::find_if(kerning_pairs_, [&](const KERNINGPAIR& known) {
        return known.wFirst == pair.wFirst && known.wSecond == pair.wSecond;
    });
    if (found == kerning_pairs_.end())
        return 0;
    pair.iKernAmount = found->iKernAmount;
    return 1;
}

void vFONTDETAIL::SetKerningValue(const KERNINGPAIR& pair) noexcept
{
    try {
        if (kerning_pairs_.size() == kerning_pairs_.capacity())
            kerning_pairs_.reserve(kerning_pairs_.size() + kerning_table_step);
        kerning_pairs_.push_back(pair);
    } catch (const std::bad_alloc&) {
        // The pair is asked of the font again next time.
    }
}

// The amount of a pair in the font selected into the detail's own device.
LONG vFONTDETAIL::font_kerning(const KERNINGPAIR& pair) noexcept
{
    const active_dc dc(*device_);
    device_->vDEVICE::FontSpec(*this);
    if (!device_->ActivateFont(0))
        return 0;
    if (!font_pairs_read_) {
        try {
            font_pairs_.resize(GetKerningPairsA(dc, 0, nullptr));
            const auto count = static_cast<std::uint32_t>(font_pairs_.size());
            font_pairs_.resize(count != 0 ? GetKerningPairsA(dc, count, font_pairs_.data()) : 0);
        } catch (const std::bad_alloc&) {
            return 0;
        }
        std::ranges::sort(font_pairs_, {}, font_codes);
        font_pairs_read_ = true;
    }
    const auto found = std::ranges::lower_bound(font_pairs_, font_codes(pair), {}, font_codes);
    return found != font_pairs_.end() && font_codes(*found) == font_codes(pair) ? found->iKernAmount : 0;
}

std::int16_t vFONTDETAIL::GetKernValue(vDEVICE& device, const vCHAR& first, const vCHAR& second) noexcept
{
    const active_dc dc(device);
    KERNINGPAIR pair{pair_code(first), pair_code(second), 0};
    if (device_ && !GetKerningValue(pair)) {
        pair.iKernAmount = font_kerning(pair);
        SetKerningValue(pair);
    }
    return short_of(pair.iKernAmount);
}

// ---- font_list -----------------------------------------------------------------------------------------

namespace {

std::size_t hash_of(const vFONTSPEC& spec)
{
    std::size_t hash = 0;
    const auto mix = [&](std::size_t value) { hash = hash * 31 + value; };
    mix(std::hash<std::string_view>()(spec.Name().View()));
    mix(static_cast<std::uint32_t>(spec.Style()));
    mix(static_cast<std::uint32_t>(spec.Height()));
    mix(static_cast<std::uint32_t>(spec.Expansion()()));
    mix(static_cast<std::uint32_t>(spec.Angle()()));
    return hash;
}

bool same_spec(const vFONTSPEC& a, const vFONTSPEC& b) { return a == b; }

} // namespace

vFONTDETAIL* font_list::use(const vFONTSPEC& spec, vDEVICE& device) noexcept
{
    const std::size_t hash = hash_of(spec);
    const auto [first, last] = index_.equal_range(hash);
    for (auto entry = first; entry != last; ++entry)
        if (same_spec(*entry->second, spec)) {
            details_.splice(details_.begin(), details_, entry->second);
            return &details_.front();
        }
    try {
        details_.emplace_front(spec, device);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    try {
        index_.emplace(hash, details_.begin());
    } catch (const std::bad_alloc&) {
        details_.pop_front();
        return nullptr;
    }
    return &details_.front();
}

} // namespace klv
