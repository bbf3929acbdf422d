#pragma once

#include "klv/base/types.h"

#include <cstdint>

namespace klv {

/// Result codes of the stream interface, with their published values.
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001U);
inline constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070U);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009U);
constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
constexpr bool FAILED(HRESULT result) { return result < 0; }

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend bool operator==(const GUID&, const GUID&) = default;
};
inline constexpr GUID IID_IUnknown{0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_ISequentialStream{
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr GUID IID_IStream{0x0000000C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Origins of IStream::Seek.
enum STREAM_SEEK : std::uint32_t { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };

/// What IStream::Stat tells; only the type and the size have meaning here.
struct STATSTG {
    std::uint32_t type; ///< 2: a stream
    std::uint64_t cbSize; ///< bytes
    std::uint32_t grfMode;
};
inline constexpr std::uint32_t STGTY_STREAM = 2;
inline constexpr std::uint32_t STATFLAG_NONAME = 1;

/// The stream interface of OLE structured storage, as published: counted references, 64-bit positions.
class IStream {
public:
    virtual HRESULT QueryInterface(const GUID& interface_id, void** object) noexcept = 0;
    virtual std::uint32_t AddRef() noexcept = 0;
    virtual std::uint32_t Release() noexcept = 0;
    /// Fewer bytes than asked at the end of the stream, with S_OK or S_FALSE.
    virtual HRESULT Read(void* to, std::uint32_t size, std::uint32_t* read) noexcept = 0;
    virtual HRESULT Write(const void* from, std::uint32_t size, std::uint32_t* written) noexcept = 0;
    virtual HRESULT Seek(std::int64_t distance, std::uint32_t origin, std::uint64_t* position) noexcept = 0;
    virtual HRESULT SetSize(std::uint64_t size) noexcept = 0;
    virtual HRESULT CopyTo(
        IStream* target, std::uint64_t size, std::uint64_t* read, std::uint64_t* written) noexcept = 0;
    virtual HRESULT Commit(std::uint32_t flags) noexcept = 0;
    virtual HRESULT Revert() noexcept = 0;
    virtual HRESULT LockRegion(std::uint64_t offset, std::uint64_t size, std::uint32_t kind) noexcept = 0;
    virtual HRESULT UnlockRegion(std::uint64_t offset, std::uint64_t size, std::uint32_t kind) noexcept = 0;
    virtual HRESULT Stat(STATSTG* statistics, std::uint32_t flags) noexcept = 0;
    virtual HRESULT Clone(IStream** copy) noexcept = 0;

protected:
    ~IStream() = default;
};

/// A new stream in memory, empty, with one reference. \return null when memory is out.
IStream* CreateMemoryStream() noexcept;

} // namespace klv
