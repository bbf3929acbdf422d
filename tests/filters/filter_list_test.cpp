#include "klv/filters/filter_list.h"
#include "klv/filters/filter_set.h"
#include "klv/filters/progress.h"
#include "klv/platform/system/tick_count.h"
#include "klv/streams/memory_stream.h"

#include "tests/filters/wmf_builder.h"

#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

namespace klv {
namespace {

void fill(vMEMSTREAM& stream, const std::vector<std::uint8_t>& bytes)
{
    stream.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    stream.MoveFromStart(0);
}

TEST(FilterList, ChoosesByExtensionThenByContents)
{
    const auto wmf = test::wmf_builder().build();
    const std::vector<std::uint8_t> nonsense(64, 7);
    std::vector<std::uint8_t> bmp(64, 0);
    bmp[0] = 'B';
    bmp[1] = 'M';
    const struct {
        const char* name;
        const std::vector<std::uint8_t>* contents;
        oFILTER_TYPE type;
        const char* id;
    } cases[] = {
        {"a.wmf", &wmf, oFILTER_METAFILE, "WMF"},
        {"a.Wmf", &wmf, oFILTER_METAFILE, "WMF"},
        {"a.bmp", &wmf, oFILTER_METAFILE, "WMF"}, // declined by its extension's filter, claimed by contents
        {"a.wmf", &bmp, oFILTER_BITMAP, "BMP"},
        {"a.xyz", &bmp, oFILTER_BITMAP, "BMP"},
        {"a.fpx", &bmp, oFILTER_BITMAP, "FPX"},
        {"a.gif", &bmp, oFILTER_BITMAP, "BMP"}, // not for the filters that know their extension only
        {"a.png", &nonsense, oFILTER_BITMAP, "PNG"}, // known by its extension only
        {"a.xyz", &nonsense, oFILTER_NONE, nullptr},
        {".WMF", &nonsense, oFILTER_METAFILE, "WMF"}, // an extension alone is taken at its word
        {".xyz", &wmf, oFILTER_NONE, nullptr},
    };
    const oFILTERLIST filters;
    for (const auto& c : cases) {
        vMEMSTREAM stream{vSTRING(c.name)};
        fill(stream, *c.contents);
        oFILTER* filter = nullptr;
        EXPECT_EQ(oFILTERLIST::GetFilter(&stream, &filter), c.type) << c.name;
        if (c.id) {
            ASSERT_NE(filter, nullptr) << c.name;
            EXPECT_EQ(filter->GetID(), vSTRING(c.id)) << c.name;
        } else {
            EXPECT_EQ(filter, nullptr) << c.name;
        }
        EXPECT_EQ(stream.CurrentPos(), 0u) << c.name;
    }
}

TEST(FilterList, GivesEachThreadFiltersOfItsOwn)
{
    const auto wmf_filter = [] {
        vMEMSTREAM name{vSTRING(".WMF")};
        oFILTER* filter = nullptr;
        oFILTERLIST::GetFilter(&name, &filter);
        return filter;
    };
    const oFILTERLIST filters;
    const oFILTER* const mine = wmf_filter();
    std::thread([&] {
        const oFILTER* const of_other = wmf_filter();
        EXPECT_NE(of_other, nullptr) << "one handle serves all threads";
        EXPECT_NE(of_other, mine);
    }).join();
}

// What the list leaves open: formats that are in none, and bytes that tell what only a name told.
TEST(FilterSet, FindsReadersAndWritersByWhatTellsAFormat)
{
    using namespace std::string_literals;
    const struct {
        const char* name;
        std::string contents;
        const char* id;
    } readers[] = {
        {"unnamed", "\x89PNG\r\n\x1A\n and more", "PNG"},
        {"unnamed", "8BPS\0\1"s, "PSD"},
        {"unnamed", std::string(2048, '\0') + "PCD_IPI", "PCD"},
        {"unnamed", "pixels" + "TRUEVISION-XFILE.\0"s, "TGA"},
        {"unnamed", "pixels" + "TRUEVISION-XFILE.\0 no more at the end"s, nullptr},
        {"a.psd", "nothing of the kind", "PSD"},
        {"a.png", "8BPS\0\1"s, "PNG"}, // the name goes first
        {"unnamed", "PNG", nullptr},
    };
    const filter_set filters;
    ASSERT_TRUE(filters.complete());
    for (const auto& c : readers) {
        vMEMSTREAM stream{vSTRING(c.name)};
        fill(stream, {c.contents.begin(), c.contents.end()});
        const oFILTER* const filter = filters.reader_of(stream);
        EXPECT_EQ(filter ? filter->GetID() : vSTRING(), vSTRING(c.id ? c.id : "")) << c.name;
        EXPECT_EQ(stream.CurrentPos(), 0U) << c.name;
    }
    const std::pair<const char*, const char*> writers[] = {{"PNG", "PNG"}, {"JPEG", "JPG"}, {"TIFF", "TIF"},
        {"DIB", "BMP"}, {"VST", "TGA"}, {"PSD", "PSD"}, {"PCD", ""}, {"WMF", ""}, {"", ""}, {"png", ""}};
    for (const auto& [extension, id] : writers) {
        const oFILTER* const filter = filters.writer_of(extension);
        EXPECT_EQ(filter ? filter->GetID() : vSTRING(), vSTRING(id)) << extension;
    }
    filters.for_each([](const oFILTER& filter) { EXPECT_FALSE(filter.GetDescription().Null()); });
}

TEST(FilterList, KeepsTheOrderOfProbing)
{
    std::string order;
    const oFILTERLIST filters;
    for (std::uint16_t i = 0; i < oFILTERLIST::GetNoItems(); ++i)
        order += std::string(order.empty() ? "" : " ") + filters[i]->GetID()();
    EXPECT_EQ(order, "EPS FPX GIF JPG PCX PCD PNG TIF TGA BMP WMF");
}

TEST(FilterList, LivesFromTheFirstHandleToTheLast)
{
    EXPECT_EQ(oFILTERLIST::GetNoItems(), 0);
    {
        const oFILTERLIST first;
        const oFILTERLIST second = first;
        EXPECT_GT(oFILTERLIST::GetNoItems(), 0);
        EXPECT_EQ(second[0], first[0]);
        EXPECT_EQ(first[oFILTERLIST::GetNoItems()], nullptr);
    }
    EXPECT_EQ(oFILTERLIST::GetNoItems(), 0);
}

TEST(Filter, OffersDepthsUpToItsOwn)
{
    const oFILTERLIST filters;
    for (std::uint16_t i = 0; i < oFILTERLIST::GetNoItems(); ++i) {
        oFILTER& filter = *filters[i];
        EXPECT_FALSE(filter.GetDescription().Null()) << filter.GetID()();
        EXPECT_EQ(filter.ExportColourDepths(16), 0);
        filter.SetMaxColourDepth(8);
        EXPECT_EQ(filter.ImportColourDepths(24), 0);
        EXPECT_NE(filter.ImportColourDepths(8), 0);
        EXPECT_EQ(filter.ImportColourDepths(7), 0);
        EXPECT_EQ(filter.ExportColourDepths(24), 0);
    }
}

std::uint32_t now_for_test = 0;
DWORD test_clock() { return now_for_test; }

TEST(Progress, ReportsAtMostEvery125Milliseconds)
{
    class recorder : public oPROGRESS {
    public:
        void oUpdate(std::uint32_t value) override
        {
            oPROGRESS::oUpdate(value);
            reports.push_back(value);
        }
        std::vector<std::uint32_t> reports;
    };
    recorder progress;
    set_tick_source(test_clock);
    now_for_test = 0xFFFFFFF0; // tick counts wrap
    progress.oStart();
    progress.oFullScale(100);
    progress.oIncrement(10);
    now_for_test += 126;
    progress.oIncrement(10);
    progress.oIncrement(10);
    now_for_test += 126;
    progress.oSet(77);
    set_tick_source(nullptr);
    EXPECT_EQ(progress.reports, (std::vector<std::uint32_t>{20, 77}));
    EXPECT_EQ(progress.FullScale(), 100u);
}

} // namespace
} // namespace klv
