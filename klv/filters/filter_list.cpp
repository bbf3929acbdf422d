#include "klv/filters/filter_list.h"

#include "klv/filters/gif/gif_filter.h"
#include "klv/filters/raster/bmp_filter.h"
#include "klv/filters/raster/eps_filter.h"
#include "klv/filters/raster/flashpix_filter.h"
#include "klv/filters/raster/jpeg_filter.h"
#include "klv/filters/raster/pcx_filter.h"
#include "klv/filters/raster/photo_cd_filter.h"
#include "klv/filters/raster/png_filter.h"
#include "klv/filters/raster/targa_filter.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/filters/wmf/wmf_filter.h"
#include "klv/streams/stream.h"

#include <atomic>
#include <memory>

namespace klv {

/// The filters of one thread, linked through themselves in the order of probing, which is the order of their
/// making.
class oFILTERLISTINSTANCE : public vOBJECT {
public:
    oFILTERLISTINSTANCE();
    ~oFILTERLISTINSTANCE();
    oFILTERLISTINSTANCE(const oFILTERLISTINSTANCE&) = delete;
    oFILTERLISTINSTANCE& operator=(const oFILTERLISTINSTANCE&) = delete;

    oFILTER* first() const { return first_; }
    static oFILTER* next(const oFILTER* filter) { return filter->next_; }
    std::uint16_t count() const { return count_; }

    /// Those of this thread, made when they are first asked for while there is a handle; else null.
    static oFILTERLISTINSTANCE* instance() noexcept;
    /// A handle appears, or one goes.
    static void add_handle() noexcept { ++handles; }
    static void remove_handle() noexcept;

private:
    template <typename Filter> void append();

    static std::atomic<std::uint32_t> handles;
    static thread_local std::unique_ptr<oFILTERLISTINSTANCE> of_thread;

    oFILTER* first_ = nullptr;
    oFILTER* last_ = nullptr;
    std::uint16_t count_ = 0;
};

constinit std::atomic<std::uint32_t> oFILTERLISTINSTANCE::handles = 0;
constinit thread_local std::unique_ptr<oFILTERLISTINSTANCE> oFILTERLISTINSTANCE::of_thread;

oFILTERLISTINSTANCE::oFILTERLISTINSTANCE()
{
    append<EPSFILTER>();
    append<FPXFILTER>();
    append<GIFFILTER>();
    append<JPEGFILTER>();
    append<PCXFILTER>();
    append<PCDFILTER>();
    append<PNGFILTER>();
    append<TIFFILTER>();
    append<TGAFILTER>();
    append<DIBFILTER>();
    append<WMFFILTER>();
}

oFILTERLISTINSTANCE::~oFILTERLISTINSTANCE()
{
    while (first_) {
        oFILTER* const filter = first_;
        first_ = filter->next_;
        delete filter;
    }
}

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

template <typename Filter> void oFILTERLISTINSTANCE::append()
{
    oFILTER* const filter = new Filter;
    if (!filter)
        return;
    filter->previous_ = last_;
    (last_ ? last_->next_ : first_) = filter;
    last_ = filter;
    ++count_;
}

namespace {

template <typename Accepts> oFILTER* find_filter(Accepts accepts)
{
    const auto* list = oFILTERLISTINSTANCE::instance();
    for (oFILTER* filter = list ? list->first() : nullptr; filter; filter = oFILTERLISTINSTANCE::next(filter))
        if (accepts(*filter))
            return filter;
    return nullptr;
}

oFILTER* recognise(vSTREAM& stream)
{
    oFILTER* const by_name
        = find_filter([&](oFILTER& filter) { return filter.CheckExtension(&stream) != 0; });
    const auto name = stream.Name().View();
    if (!name.empty() && name.front() == '.')
        return by_name;
    if (by_name && by_name->CanTranslate(&stream))
        return by_name;
    // Filters without a recogniser of contents answer what CheckExtension found, so each is asked first.
    return find_filter([&](oFILTER& filter) {
        return filter.CheckExtension(&stream) == 0 && filter.CanTranslate(&stream) != 0;
    });
}

} // namespace

oFILTERLIST::oFILTERLIST() { oFILTERLISTINSTANCE::add_handle(); }

oFILTERLIST::oFILTERLIST(const oFILTERLIST&)
    : oFILTERLIST()
{
}

oFILTERLIST::~oFILTERLIST() { oFILTERLISTINSTANCE::remove_handle(); }

oFILTER_TYPE oFILTERLIST::GetFilter(vSTREAM* stream, oFILTER** filter)
{
    oFILTER* const found = stream ? recognise(*stream) : nullptr;
    if (filter)
        *filter = found;
    return found ? found->Type() : oFILTER_NONE;
}

std::uint16_t oFILTERLIST::GetNoItems()
{
    const auto* list = oFILTERLISTINSTANCE::instance();
    return list ? list->count() : std::uint16_t{0};
}

oFILTER* oFILTERLIST::operator[](std::uint16_t i) const
{
    return find_filter([i, at = 0u](oFILTER&) mutable { return at++ == i; });
}

} // namespace klv
