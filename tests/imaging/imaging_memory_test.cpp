#include "tests/imaging/failing_memory.h"
#include "tests/imaging/flashpix_builder.h"
#include "tests/imaging/imaging_module.h"

namespace klv {
namespace {

using namespace klv::imaging;
using test::file_bytes;

/// Runs an operation once for each of its allocations, which fails; then memory is there again.
template <class Operation> void expect_answers(const std::string& what, Operation operation)
{
    ASSERT_EQ(operation(), imaging_ok) << what; // what is made once is there now
    const long before = test::allocations();
    ASSERT_EQ(operation(), imaging_ok) << what;
    const long count = test::allocations() - before;
    EXPECT_GT(count, 0) << what;
    for (long n = 0; n < count; ++n) {
        test::fail_allocation(n);
        const std::int32_t result = operation();
        test::fail_allocation(-1);
        EXPECT_EQ(result, imaging_no_memory) << what << ", allocation " << n;
    }
    EXPECT_EQ(operation(), imaging_ok) << what;
}

/// A picture's worth of lines that nobody keeps.
std::int32_t take_nothing(
    const file_info&, const bitmap_handle&, std::uint8_t*, std::int32_t, std::int32_t, void*)
{
    return 1;
}
std::int32_t give_stripes(
    const bitmap_handle& handle, std::uint8_t* band, std::int32_t row, std::int32_t lines, void*)
{
    for (std::int32_t i = 0; i < lines * handle.bytes_per_line; ++i)
        band[i] = static_cast<std::uint8_t>(row * 3 + i % 50);
    return 1;
}

class ImagingMemory : public test::imaging_module_test {
protected:
    std::int32_t load()
    {
        file_info info{};
        bitmap_handle handle{};
        stream_.install(module_);
        std::int32_t result = module_.info("tmp", &info);
        if (result != imaging_ok)
            return result;
        const std::int32_t bits = info.bits_per_pixel > 8 ? 24 : info.bits_per_pixel;
        result = module_.init(&handle, info.width, info.height, bits);
        return result != imaging_ok
            ? result
            : module_.load("tmp", &handle, bits, 0, load_flags_all_lines, take_nothing, nullptr);
    }
    std::int32_t save(imaging_format format, std::int32_t bits)
    {
        bitmap_handle handle{};
        stream_.bytes.clear();
        stream_.install(module_);
        module_.create(&handle, conventional_memory, 60, 40, bits, 1, nullptr, bottom_left);
        return module_.save(
            "tmp", &handle, format, bits, best_quality, save_flags_default, give_stripes, nullptr);
    }
};

TEST_F(ImagingMemory, EveryAllocationThatFailsIsAnswered)
{
    std::vector<imaging_format> formats{format_bmp, format_png, format_jpeg, format_tiff, format_photoshop};
    if (magick_is_there())
        formats.insert(formats.end(), {format_pcx, format_targa});
    stream_.bytes.reserve(1 << 20); // so that the callbacks need no memory
    for (const imaging_format format : formats)
        for (const std::int32_t bits : {8, 24}) {
            const std::string what = std::to_string(format) + ", " + std::to_string(bits) + " bits";
            if (format != format_jpeg || bits == 24) {
                expect_answers("writing " + what, [&] { return save(format, bits); });
                expect_answers("reading " + what, [&] { return load(); });
            }
        }
    using namespace test::flashpix;
    compound_builder file({.small_streams = true});
    file.stream("\005Image Contents", 0, contents(0x00030000));
    add_level(file, 0, 40, 3, 3, {{1, 0x00332211, {}}, {1, 0x00332211, {}}, {1, 0x00332211, {}}});
    stream_.bytes = file.bytes();
    expect_answers("reading FlashPix", [&] { return load(); });
}

} // namespace
} // namespace klv
