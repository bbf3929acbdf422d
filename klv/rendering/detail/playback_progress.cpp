#include "klv/rendering/detail/playback_progress.h"

#include "klv/metafiles/metafile.h"

namespace klv {
namespace {

constexpr std::uint32_t steps_of_part = 1000;

} // namespace

playback_progress::playback_progress(vMETAFILE& picture, oPROGRESS* whole) noexcept
    : picture_(picture)
    , before_(picture.RemoveProgressInd())
    , whole_(whole)
{
    if (whole_)
        picture_.SetProgressInd(this);
}

playback_progress::~playback_progress()
{
    picture_.SetProgressInd(before_);
    if (whole_ && parts_ != 0)
        whole_->oTerminate();
}

void playback_progress::begin(int parts) noexcept
{
    parts_ = parts;
    if (!whole_)
        return;
    whole_->oStart();
    whole_->oFullScale(static_cast<std::uint32_t>(parts) * steps_of_part);
}

void playback_progress::oSet(std::uint32_t value)
{
    if (parts_ == 0)
        return;
    const std::uint64_t done = std::uint64_t{std::min(value, part_scale_)} * steps_of_part / part_scale_;
    reach(static_cast<std::uint32_t>(part_) * steps_of_part + static_cast<std::uint32_t>(done));
}

void playback_progress::oTerminate()
{
    if (parts_ != 0 && !stopped_)
        reach((static_cast<std::uint32_t>(part_) + 1) * steps_of_part);
}

// A playback that ends tells the position 0 once more.
void playback_progress::reach(std::uint32_t steps)
{
    reached_ = std::max(reached_, steps);
    whole_->oSet(reached_);
}

int playback_progress::Stop()
{
    stopped_ = stopped_ || whole_->Stop() != 0;
    return stopped_ ? 1 : 0;
}

} // namespace klv
