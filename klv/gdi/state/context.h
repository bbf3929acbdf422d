#pragma once

#include "klv/gdi/sink/sink.h"
#include "klv/gdi/state/drawing_state.h"
#include "klv/gdi/state/objects.h"
#include "klv/gdi/state/screen.h"

#include <memory>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

namespace klv::gdi {

/// A drawing context: the state machine above a sink.
struct drawing_context : gdi_object {
    static constexpr object_kind kind_id = object_kind::context;
    explicit drawing_context(std::unique_ptr<sink> receiver);
    ~drawing_context() override;

    drawing_state state;
    std::vector<drawing_state> saved;
    const std::unique_ptr<sink> out;

    /// Tells the sink about a setting, which has been made.
    template <class... Numbers> void tell(setting what, Numbers... numbers)
    {
        const std::int32_t as_called[] = {static_cast<std::int32_t>(numbers)...};
        out->set(state, what, as_called);
    }
    /// Whether it draws on what all threads share: the screen, or the screen's colours.
    [[nodiscard]] bool is_shared() const
    {
        return state.bitmap ? state.bitmap->pixels.table && state.bitmap->pixels.table->of_screen
                            : out->type() == OBJ_DC;
    }
};

/// A context that draws on a sink. \return its handle, null when memory is out
HDC make_context(std::unique_ptr<sink> receiver);

inline drawing_context* find_context(HDC dc) { return find<drawing_context>(dc); }

/// Held while a context is used, so that threads take turns at what is_shared says.
class shared_surface_lock {
public:
    explicit shared_surface_lock(const drawing_context& dc)
    {
        if (dc.is_shared())
            lock_ = std::unique_lock(screen_mutex());
    }

private:
    std::unique_lock<std::recursive_mutex> lock_;
};

/// Calls body(context) with the context of a handle. \return what it answers; failed for a handle of
/// another kind and where memory runs out
template <class Body>
auto with_context(
    HDC handle, decltype(std::declval<Body>()(std::declval<drawing_context&>())) failed, Body&& body) noexcept
{
    try {
        if (drawing_context* dc = find_context(handle)) {
            const shared_surface_lock lock(*dc);
            failed = body(*dc);
        }
    } catch (const std::bad_alloc&) {
    }
    return failed;
}
template <class Body> auto with_context(HDC handle, Body&& body) noexcept
{
    using answer = decltype(body(std::declval<drawing_context&>()));
    return with_context(handle, answer{}, std::forward<Body>(body));
}

/// The entries that palette indices of bitmap data mean in a context; none without a context.
[[nodiscard]] palette_view palette_of(const drawing_context* dc);

} // namespace klv::gdi
