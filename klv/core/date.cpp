#include "klv/core/date.h"

#include <array>
#include <chrono>

namespace klv {

namespace {

constexpr std::array<const char*, 12> months
    = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

const char* month_name(std::uint16_t month) noexcept
{
    return month >= 1 && month <= months.size() ? months[month - std::size_t{1}] : "";
}

std::uint16_t word(int value) noexcept { return static_cast<std::uint16_t>(value & 0xFFFF); }

void subtract(std::uint16_t& field, std::uint16_t other) noexcept { field = word(field - other); }

int short_year(std::uint16_t year) noexcept { return year >= 100 ? year % 100 : year; }

} // namespace

vDATETIME::vDATETIME() noexcept
{
    using namespace std::chrono;
    const auto now = floor<seconds>(system_clock::now());
    const auto today = floor<days>(now);
    const year_month_day date(today);
    const hh_mm_ss time(now - today);
    year_ = word(static_cast<int>(date.year()));
    month_ = word(static_cast<int>(static_cast<unsigned>(date.month())));
    day_ = word(static_cast<int>(static_cast<unsigned>(date.day())));
    hour_ = word(static_cast<int>(time.hours().count()));
    minute_ = word(static_cast<int>(time.minutes().count()));
    second_ = word(static_cast<int>(time.seconds().count()));
}

vDATETIME::vDATETIME(const int& day, const int& month, const int& year, const int& hour, const int& minute,
    const int& second) noexcept
    : year_(word(year))
    , month_(word(month))
    , day_(word(day))
    , hour_(word(hour))
    , minute_(word(minute))
    , second_(word(second))
{
}

vDATETIME::vDATETIME(const std::uint16_t& date, const std::uint16_t& time) noexcept
    : vDATETIME(date & 31, date >> 5 & 15, (date >> 9) + 1980, time >> 11, time >> 5 & 63, (time & 31) * 2)
{
}

void vDATETIME::Time24(const int& hour, const int& minute, const int& second) noexcept
{
    hour_ = word(hour);
    minute_ = word(minute);
    second_ = word(second);
}

void vDATETIME::Time12(const int& hour, const int& minute, const int& second, vDT_TTYPE half) noexcept
{
    Time24(hour, minute, second);
    if (half == vDT_TTYPE::pm)
        hour_ = word(hour_ + 12);
}

vDATETIME& vDATETIME::operator-(const vDATETIME& other) noexcept
{
    subtract(year_, other.year_);
    subtract(month_, other.month_);
    subtract(day_, other.day_);
    subtract(hour_, other.hour_);
    subtract(minute_, other.minute_);
    subtract(second_, other.second_);
    return *this;
}

vSTRING vDATETIME::UkDate() const noexcept
{
    return vSTRING().FormatString("%02d/%02d/%02d", day_, month_, short_year(year_));
}

vSTRING vDATETIME::UsDate() const noexcept
{
    return vSTRING().FormatString("%02d/%02d/%02d", month_, day_, short_year(year_));
}

vSTRING vDATETIME::FullDate() const noexcept
{
    return vSTRING().FormatString("%02d %s %02d", day_, month_name(month_), year_);
}

vSTRING vDATETIME::Time24() const noexcept
{
    return vSTRING().FormatString("%02d:%02d:%02d", hour_, minute_, second_);
}

vSTRING vDATETIME::Time12() const noexcept
{
    const bool afternoon = hour_ > 12;
    return vSTRING().FormatString(
        "%02d:%02d:%02d%s", afternoon ? hour_ - 12 : hour_, minute_, second_, afternoon ? "pm" : "am");
}

vSTRING vDATETIME::Stamp() const noexcept { return FullDate() + vSTRING(" ") + Time12(); }

} // namespace klv
