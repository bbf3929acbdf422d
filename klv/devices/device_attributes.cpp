#include "klv/bitmaps/dib.h"
#include "klv/devices/device.h"

#include <new>
#include <utility>

/// The current line, fill and font, their stacks, and the state as a whole.
namespace klv {
namespace {

template <class Stack, class Spec> void push(Stack& stack, Spec&& spec) noexcept
{
    try {
        stack.push_back(std::forward<Spec>(spec));
    } catch (const std::bad_alloc&) {
        // Left as it was; the matching pop brings back an outer state.
    }
}

template <class Spec, class Stack> Spec pop(Stack& stack, const Spec& otherwise) noexcept
{
    if (stack.empty())
        return otherwise;
    Spec spec = std::move(stack.back());
    stack.pop_back();
    return spec;
}

} // namespace

void vDEVICE::LineSpec(const vLINESPEC& spec) noexcept
{
    line_ = spec;
    line_colour_ = spec.Colour();
    line_.Colour(Convert(line_colour_, line_visible_));
}

const vLINESPEC& vDEVICE::LineSpec() const noexcept { return line_; }

void vDEVICE::PushLineSpec() noexcept
{
    vLINESPEC spec = line_;
    spec.Colour(line_colour_);
    push(line_stack_, std::move(spec));
}

void vDEVICE::PopLineSpec() noexcept { LineSpec(pop(line_stack_, vLINESPEC())); }

void vDEVICE::FillSpec(const vFILLSPEC& spec) noexcept
{
    fill_ = spec;
    fill_colour_from_ = spec.ColourFrom();
    fill_colour_to_ = spec.ColourTo();
    oDIB* bitmap = nullptr;
    if (spec.Bitmap(&bitmap)) {
        fill_visible_ = 1;
        return;
    }
    int to_visible = 1;
    fill_.ColourFrom(Convert(fill_colour_from_, fill_visible_));
    fill_.ColourTo(Convert(fill_colour_to_, to_visible));
    if (fill_.Type() != vFILL_SOLID)
        fill_visible_ |= to_visible;
}

const vFILLSPEC& vDEVICE::FillSpec() const noexcept { return fill_; }

void vDEVICE::PushFillSpec() noexcept
{
    vFILLSPEC spec = fill_;
    spec.ColourFrom(fill_colour_from_);
    spec.ColourTo(fill_colour_to_);
    push(fill_stack_, std::move(spec));
}

void vDEVICE::PopFillSpec() noexcept { FillSpec(pop(fill_stack_, vFILLSPEC())); }

void vDEVICE::PushState() noexcept
{
    PushClipArea();
    PushFillSpec();
    PushLineSpec();
    PushFontSpec();
}

void vDEVICE::PopState() noexcept
{
    PopClipArea();
    PopFillSpec();
    PopLineSpec();
    PopFontSpec();
}

bool vDEVICE::FillWanted() const noexcept { return fill_visible_ && fill_.Type() != vFILL_NONE; }

bool vDEVICE::LineWanted() const noexcept { return line_visible_ && line_.LineType() != vLINE_NONE; }

} // namespace klv
