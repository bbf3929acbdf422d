#include "klv/attributes/fill_spec.h"

#include "klv/bitmaps/stream_dib.h"
#include "klv/streams/stream.h"

#include <new>

namespace klv {

namespace {

std::unique_ptr<oDIB> copy_of(const oDIB* dib)
{
    return std::unique_ptr<oDIB>(dib == nullptr ? nullptr : new oSTREAMDIB(*dib, 0));
}

} // namespace

vFILLSPEC::vFILLSPEC() noexcept = default;

vFILLSPEC::vFILLSPEC(vFILLTYPE type, const vCOLOUR& from, const vCOLOUR& to, const vANGLE& angle,
    vFILLMODE mode, const vPOINT& centre) noexcept
    : from_(from)
    , to_(to)
    , angle_(angle)
    , centre_(centre)
    , type_(type)
    , mode_(mode)
{
}

vFILLSPEC::vFILLSPEC(const oDIB& dib) noexcept
    : type_(vFILL_BITMAP)
    , bitmap_(copy_of(&dib))
{
}

vFILLSPEC::vFILLSPEC(vSTREAM& in) noexcept { *this << in; }

vFILLSPEC::vFILLSPEC(const vFILLSPEC& other) noexcept
    : vOBJECT(other)
    , from_(other.from_)
    , to_(other.to_)
    , angle_(other.angle_)
    , centre_(other.centre_)
    , type_(other.type_)
    , mode_(other.mode_)
    , bitmap_(copy_of(other.bitmap_.get()))
{
}

vFILLSPEC::vFILLSPEC(vFILLSPEC&& other) noexcept = default;

vFILLSPEC& vFILLSPEC::operator=(const vFILLSPEC& other) noexcept
{
    if (this != &other)
        *this = vFILLSPEC(other);
    return *this;
}

vFILLSPEC& vFILLSPEC::operator=(vFILLSPEC&& other) noexcept = default;
vFILLSPEC::~vFILLSPEC() = default;

int vFILLSPEC::Bitmap(oDIB** out) const noexcept
{
    if (bitmap_ == nullptr)
        return 0;
    *out = bitmap_.get();
    return 1;
}

vSTREAM& vFILLSPEC::operator>>(vSTREAM& out) const noexcept
{
    out << static_cast<std::uint16_t>(type_);
    from_ >> out;
    to_ >> out;
    angle_ >> out;
    out << static_cast<std::uint16_t>(mode_);
    if (bitmap_ != nullptr)
        *bitmap_ >> out;
    else
        out << std::uint16_t{0};
    return out << centre_.x << centre_.y;
}

vSTREAM& vFILLSPEC::operator<<(vSTREAM& in) noexcept
{
    // A bitmap begins with the size of its header.
    constexpr std::uint16_t bitmap_follows = 40;
    constexpr std::int32_t word_size = 2;
    type_ = static_cast<vFILLTYPE>(in.ReadUWord());
    from_ << in;
    to_ << in;
    angle_ << in;
    mode_ = static_cast<vFILLMODE>(in.ReadUWord());
    bitmap_.reset();
    if (in.ReadUWord() == bitmap_follows) {
        in.MoveFromCur(-word_size);
        bitmap_.reset(new oSTREAMDIB(in, 0));
        if (bitmap_ != nullptr && bitmap_->Width() == 0) // it could not be read
            bitmap_.reset();
    }
    return in;
}

} // namespace klv
