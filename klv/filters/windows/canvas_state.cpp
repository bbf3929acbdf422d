#include "klv/filters/windows/canvas_state.h"

#include <utility>

namespace klv {
namespace {

// A file that does nothing but save its state may not cost more than this many.
constexpr std::size_t most_saved_states = 1000;

} // namespace

void canvas_state_stack::save(const canvas_state& state)
{
    if (saved_.size() < most_saved_states)
        saved_.push_back(state);
}

std::optional<canvas_state> canvas_state_stack::take(int which)
{
    const auto count = static_cast<std::int64_t>(saved_.size());
    const std::int64_t place = which < 0 ? count + which : std::int64_t{which} - 1;
    if (place < 0 || place >= count)
        return std::nullopt;
    std::optional<canvas_state> state(std::move(saved_[static_cast<std::size_t>(place)]));
    saved_.erase(saved_.begin() + place, saved_.end());
    return state;
}

} // namespace klv
