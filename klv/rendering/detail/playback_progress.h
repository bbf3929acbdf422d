#pragma once

#include "klv/core/progress.h"

#include <algorithm>
#include <cstdint>

namespace klv {

class vMETAFILE;

/// Tells one indicator of a drawing that plays its picture several times: each time is a part of the whole.
/// Also remembers that the indicator asked to stop.
class playback_progress : public oPROGRESS {
public:
    /// Takes the place of the picture's own indicator for as long as it lives. whole may be null.
    playback_progress(vMETAFILE& picture, oPROGRESS* whole) noexcept;
    ~playback_progress() override;
    playback_progress(const playback_progress&) = delete;
    playback_progress& operator=(const playback_progress&) = delete;

    /// From here on each playback counts. Before, playbacks are only asked whether to stop.
    void begin(int parts) noexcept;
    void next_part() noexcept { ++part_; }
    [[nodiscard]] bool stopped() const noexcept { return stopped_; }

    void oFullScale(std::uint32_t full_scale) override { part_scale_ = std::max(full_scale, 1U); }
    void oStart() override { }
    void oIncrement(std::uint32_t) override { }
    void oSet(std::uint32_t value) override;
    void oTerminate() override;
    int Stop() override;

private:
    void reach(std::uint32_t steps);

    vMETAFILE& picture_;
    oPROGRESS* before_;
    oPROGRESS* whole_;
    int parts_ = 0;
    int part_ = 0;
    std::uint32_t part_scale_ = 1;
    std::uint32_t reached_ = 0; // steps of all parts
    bool stopped_ = false;
};

} // namespace klv
