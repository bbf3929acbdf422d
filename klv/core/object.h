#pragma once

namespace klv {

/// Empty root of the library's objects and values. It adds no data; an object made with `new` takes its
/// memory from vMemAlloc, so that `new X` answers null when memory is out (see object.cpp).
class vOBJECT {
public:
    static void* operator new(decltype(sizeof(0)) size) noexcept;
    static void* operator new(decltype(sizeof(0)), void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept;
    static void operator delete(void*, void*) noexcept { }
};

} // namespace klv
