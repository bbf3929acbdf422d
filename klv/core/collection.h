#pragma once

#include "klv/core/object.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"

#include <cstdint>

namespace klv {

/// What the values of a vCOLLECTION are. Only int_pairs can be filled (with points); int_pairs, words and
/// longs can be read as points.
enum class vARRAYTYPE : std::uint16_t {
    bytes4 = 0,
    int_pairs = 1,
    rects = 2,
    words = 3,
    longs = 4,
};

/// Growable array of 16-bit values, used to hand the points of a polyline to a device.
class vCOLLECTION : public vOBJECT {
public:
    explicit vCOLLECTION(vARRAYTYPE type) noexcept
        : type_(type)
    {
    }
    /// Works on the caller's buffer of capacity bytes that holds count values; it is never grown or freed.
    vCOLLECTION(std::uint8_t* buffer, vARRAYTYPE type, std::uint16_t capacity, std::uint16_t count) noexcept;
    vCOLLECTION(const vCOLLECTION&) = delete;
    vCOLLECTION& operator=(const vCOLLECTION&) = delete;
    ~vCOLLECTION();

    /// Stores the low 16 bits of x and y. \return 1, or 0 for another type or when there is no room
    int AddPoint(const vPOINT& p) noexcept;
    /// The i-th point; (0, 0) for other types and beyond the end.
    [[nodiscard]] vPOINT GetPoint(std::uint16_t i) const noexcept;
    /// The stored 16-bit values, two for each point.
    [[nodiscard]] std::uint16_t NoValues() const noexcept { return count_; }
    /// Forgets the values and keeps the buffer.
    void Reset() noexcept { count_ = 0; }
    [[nodiscard]] vARRAYTYPE Type() const noexcept { return type_; }

    /// Nothing else can be stored: these do nothing and answer 0 or (0, 0, 0, 0).
    int AddInt(int) noexcept { return 0; }
    int AddRect(const vRECT&) noexcept { return 0; }
    int AddUWord(std::uint16_t) noexcept { return 0; }
    [[nodiscard]] int GetInt(std::uint16_t) const noexcept { return 0; }
    [[nodiscard]] vRECT GetRect(std::uint16_t) const noexcept { return {}; }
    [[nodiscard]] std::uint16_t GetUWord(std::uint16_t) const noexcept { return 0; }

private:
    void Update() noexcept;

    std::uint8_t* buffer_ = nullptr;
    vARRAYTYPE type_;
    std::uint32_t capacity_ = 0;
    std::uint16_t count_ = 0;
    bool owns_ = true;
};

} // namespace klv
