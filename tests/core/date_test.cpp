#include "klv/core/date.h"

#include <gtest/gtest.h>

using namespace klv;

namespace klv {

static void PrintTo(const vSTRING& s, std::ostream* out) { *out << '"' << s.View() << '"'; }

} // namespace klv

TEST(DateTime, WritesItselfInEveryForm)
{
    const struct {
        vDATETIME value;
        const char *uk, *us, *full, *time24, *time12;
    } cases[] = {
        {{5, 3, 1999, 14, 7, 9}, "05/03/99", "03/05/99", "05 Mar 1999", "14:07:09", "02:07:09pm"},
        {{31, 12, 2000, 12, 0, 0}, "31/12/00", "12/31/00", "31 Dec 2000", "12:00:00", "12:00:00am"},
        {{1, 1, 7, 0, 30, 5}, "01/01/07", "01/01/07", "01 Jan 07", "00:30:05", "00:30:05am"},
        {{1, 13, 65535, 13, 5, 0}, "01/13/35", "13/01/35", "01  65535", "13:05:00", "01:05:00pm"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value.UkDate(), c.uk);
        EXPECT_EQ(c.value.UsDate(), c.us);
        EXPECT_EQ(c.value.FullDate(), c.full);
        EXPECT_EQ(c.value.Time24(), c.time24);
        EXPECT_EQ(c.value.Time12(), c.time12);
        EXPECT_EQ(c.value.Stamp(), c.value.FullDate() + vSTRING(" ") + c.value.Time12());
    }
}

TEST(DateTime, UnpacksTheFileSystemsForm)
{
    EXPECT_EQ(vDATETIME(0x2665, 0x7000), vDATETIME(5, 3, 1999, 14, 0, 0));
    EXPECT_EQ(vDATETIME(0xFFFF, 0xBF7D), vDATETIME(31, 15, 2107, 23, 59, 58));
}

TEST(DateTime, ComparesFromTheYearDown)
{
    const vDATETIME later(1, 1, 2000, 0, 0, 0);
    const vDATETIME earlier(31, 12, 1999, 23, 59, 59);
    EXPECT_TRUE(later > earlier && earlier < later && later >= earlier && later <= later);
    EXPECT_TRUE(later != earlier);
    EXPECT_TRUE(vDATETIME(1, 2, 2000, 0, 0, 1) > vDATETIME(1, 2, 2000, 0, 0, 0));
}

TEST(DateTime, SubtractsFieldByField)
{
    vDATETIME d(1, 1, 2000, 0, 0, 0);
    d - vDATETIME(31, 12, 1999, 0, 0, 1);
    EXPECT_EQ(d.Year(), 1);
    EXPECT_EQ(d.Month(), 65525);
    EXPECT_EQ(d.Day(), 65506);
    EXPECT_EQ(d.Second(), 65535);
}

TEST(DateTime, SetsTheClock)
{
    vDATETIME d(1, 1, 2000, 0, 0, 0);
    d.Time12(1, 2, 3, vDT_TTYPE::pm);
    EXPECT_EQ(d, vDATETIME(1, 1, 2000, 13, 2, 3));
    d.Time12(1, 2, 3, vDT_TTYPE::am);
    EXPECT_EQ(d.Hour(), 1);
    const vDATETIME now;
    EXPECT_TRUE(now.Year() >= 2024 && now.Month() >= 1 && now.Month() <= 12 && now.Hour() < 24);
}
