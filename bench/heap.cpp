#include <malloc.h>

// Freed memory stays with the process. Otherwise large work, ours and the references', is measured by how
// often the C library hands pages back to the system between two runs.
namespace {

constexpr int most_kept = 1 << 30;

[[maybe_unused]] const bool kept
    = mallopt(M_TRIM_THRESHOLD, most_kept) == 1 && mallopt(M_MMAP_THRESHOLD, most_kept) == 1;

} // namespace
