#pragma once

namespace klv::test {

/// The memory of new in this program, that of modules which it loads among it.
///
/// The next n allocations succeed, then one fails. Negative: all succeed.
void fail_allocation(long n);
/// Allocations so far.
long allocations();

} // namespace klv::test
