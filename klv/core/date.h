#pragma once

#include "klv/core/object.h"
#include "klv/core/string.h"

#include <array>
#include <compare>
#include <cstdint>

namespace klv {

/// Half of the day for vDATETIME::Time12.
enum class vDT_TTYPE : int {
    am = 0,
    pm = 1,
};

/// A calendar date and clock time. Fields are stored as given; there is no time-zone or calendar arithmetic.
class vDATETIME : public vOBJECT {
public:
    /// Now, in Coordinated Universal Time.
    vDATETIME() noexcept;
    vDATETIME(const int& day, const int& month, const int& year, const int& hour, const int& minute,
        const int& second) noexcept;
    /// From the packed date and time of the FAT file system (two-second steps).
    vDATETIME(const std::uint16_t& date, const std::uint16_t& time) noexcept;

    [[nodiscard]] std::uint16_t Year() const noexcept { return year_; }
    [[nodiscard]] std::uint16_t Month() const noexcept { return month_; }
    [[nodiscard]] std::uint16_t Day() const noexcept { return day_; }
    [[nodiscard]] std::uint16_t Hour() const noexcept { return hour_; }
    [[nodiscard]] std::uint16_t Minute() const noexcept { return minute_; }
    [[nodiscard]] std::uint16_t Second() const noexcept { return second_; }
    void Time24(const int& hour, const int& minute, const int& second) noexcept;
    /// Adds 12 to the hour in the afternoon.
    void Time12(const int& hour, const int& minute, const int& second, vDT_TTYPE half) noexcept;

    /// Year, month, day, hour, minute, second in this order.
    bool operator==(const vDATETIME& other) const noexcept { return fields() == other.fields(); }
    std::strong_ordering operator<=>(const vDATETIME& other) const noexcept
    {
        return fields() <=> other.fields();
    }

    /// Subtracts field from field in place, each modulo 2^16 and without borrowing.
    vDATETIME& operator-(const vDATETIME& other) noexcept;

    /// 05/03/99 for 5 March 1999.
    [[nodiscard]] vSTRING UkDate() const noexcept;
    /// 03/05/99 for 5 March 1999.
    [[nodiscard]] vSTRING UsDate() const noexcept;
    /// 05 Mar 1999.
    [[nodiscard]] vSTRING FullDate() const noexcept;
    /// 14:07:09.
    [[nodiscard]] vSTRING Time24() const noexcept;
    /// 02:07:09pm; the hours 0 and 12 stay as they are, with am.
    [[nodiscard]] vSTRING Time12() const noexcept;
    /// FullDate, a space, Time12.
    [[nodiscard]] vSTRING Stamp() const noexcept;

private:
    [[nodiscard]] std::array<std::uint16_t, 6> fields() const noexcept
    {
        return {year_, month_, day_, hour_, minute_, second_};
    }

    std::uint16_t year_;
    std::uint16_t month_;
    std::uint16_t day_;
    std::uint16_t hour_;
    std::uint16_t minute_;
    std::uint16_t second_;
};

} // namespace klv
