#include "klv/filters/filter_list.h"

#include "klv/filters/filter_set.h"

#include <atomic>
#include <memory>

namespace klv {

/// The filters of one thread. Those that are in no list are at the end of the set.
class oFILTERLISTINSTANCE : public vOBJECT {
public:
    /// Those of this thread, made when they are first asked for while there is a handle; else null.
    static oFILTERLISTINSTANCE* instance() noexcept;
    /// A handle appears, or one goes.
    static void add_handle() noexcept { ++handles; }
    static void remove_handle() noexcept;

    filter_set filters;

private:
    static std::atomic<std::uint32_t> handles;
    static thread_local std::unique_ptr<oFILTERLISTINSTANCE> of_thread;
};

constinit std::atomic<std::uint32_t> oFILTERLISTINSTANCE::handles = 0;
constinit thread_local std::unique_ptr<oFILTERLISTINSTANCE> oFILTERLISTINSTANCE::of_thread;

oFILTERLISTINSTANCE* oFILTERLISTINSTANCE::instance() noexcept
{
    if (handles == 0)
        of_thread.reset();
    else if (!of_thread)
        of_thread.reset(new oFILTERLISTINSTANCE);
    return of_thread.get();
}

// The filters of other threads go when those threads ask again or end.
void oFILTERLISTINSTANCE::remove_handle() noexcept
{
    if (--handles == 0)
        of_thread.reset();
}

oFILTERLIST::oFILTERLIST() { oFILTERLISTINSTANCE::add_handle(); }

oFILTERLIST::oFILTERLIST(const oFILTERLIST&)
    : oFILTERLIST()
{
}

oFILTERLIST::~oFILTERLIST() { oFILTERLISTINSTANCE::remove_handle(); }

oFILTER_TYPE oFILTERLIST::GetFilter(vSTREAM* stream, oFILTER** filter)
{
    const auto* const list = oFILTERLISTINSTANCE::instance();
    oFILTER* const found = list && stream ? list->filters.recognise(*stream) : nullptr;
    if (filter)
        *filter = found;
    return found ? found->Type() : oFILTER_NONE;
}

std::uint16_t oFILTERLIST::GetNoItems()
{
    const auto* const list = oFILTERLISTINSTANCE::instance();
    return list ? list->filters.listed_count() : std::uint16_t{0};
}

oFILTER* oFILTERLIST::operator[](std::uint16_t i) const
{
    const auto* const list = oFILTERLISTINSTANCE::instance();
    return list && i < list->filters.listed_count() ? list->filters.at(i) : nullptr;
}

} // namespace klv
