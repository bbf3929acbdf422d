#pragma once

#include "klv/bitmaps/dib.h"

#include <cstdint>
#include <memory>

namespace klv {

class vMEMSTREAM;
class vRECT;

/// A bitmap whose pixels lie in a memory stream of its own, which moves to a temporary file when it grows
/// large. Lines are read and written through that stream; they cannot be locked.
class oSTREAMDIB : public oDIB {
public:
    explicit oSTREAMDIB(int flag = 0) noexcept;
    /// Reads the stream form.
    oSTREAMDIB(vSTREAM& stream, int flag) noexcept;
    oSTREAMDIB(const oDIB& source, int flag) noexcept;
    oSTREAMDIB(
        std::int32_t width, std::int32_t height, std::int32_t bits, oCOLOUR_MODEL model, int flag) noexcept;
    /// A copy of an area of the source (null: all of it; y from the top) in the depth of
    /// the model. smooth as in the converting oMEMDIB.
    oSTREAMDIB(const oDIB& source, oCOLOUR_MODEL model, int smooth, int flag, const vRECT* area) noexcept;
    oSTREAMDIB(const oSTREAMDIB& other) noexcept;
    oSTREAMDIB& operator=(const oSTREAMDIB& other) noexcept;
    ~oSTREAMDIB() override;

    int SetHeader(const oDIBHEADER& header) noexcept override;
    int SetImageBlock(const std::uint8_t* pixels, oCOLOUR_MODEL model, std::int32_t x, std::int32_t y,
        std::int32_t width, std::int32_t height) noexcept override;
    int GetImageBlock(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
        std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept override;
    int SetImageLines(const std::uint8_t* pixels, oCOLOUR_MODEL model, std::int32_t first,
        std::int32_t count) noexcept override;
    int GetImageLines(std::int32_t first, std::int32_t count, std::uint8_t* pixels,
        oCOLOUR_MODEL* model) const noexcept override;
    /// Both answer 0: there is no block of memory to lock.
    int LockImageLines(
        std::int32_t first, std::int32_t count, std::uint8_t** pixels, oCOLOUR_MODEL model) noexcept override;
    int ReleaseImageLines(int changed) noexcept override;
    void operator<<(vSTREAM& stream) noexcept override;
    void operator>>(vSTREAM& stream) const noexcept override;

private:
    [[nodiscard]] bool make_pixels() noexcept;
    void copy_from(const oDIB& source) noexcept;
    void make_empty() noexcept;
    [[nodiscard]] bool read_at(std::uint64_t offset, std::uint8_t* bytes, std::uint32_t count) const noexcept;
    [[nodiscard]] bool write_at(
        std::uint64_t offset, const std::uint8_t* bytes, std::uint32_t count) noexcept;

    std::unique_ptr<vMEMSTREAM> pixels_;
};

} // namespace klv
