#include "klv/platform/system/ole_stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace klv {

namespace {

using stream_bytes = std::vector<std::uint8_t>;

// A stream over bytes that its clones share, each with a position of its own.
class memory_stream final : public IStream {
public:
    explicit memory_stream(std::shared_ptr<stream_bytes> bytes)
        : bytes_(std::move(bytes))
    {
    }

    HRESULT QueryInterface(const GUID& interface_id, void** object) noexcept override
    {
        if (!object)
            return STG_E_INVALIDPOINTER;
        const bool known = interface_id == IID_IUnknown || interface_id == IID_ISequentialStream
            || interface_id == IID_IStream;
        *object = known ? static_cast<IStream*>(this) : nullptr;
        if (!known)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    std::uint32_t AddRef() noexcept override { return ++references_; }

    std::uint32_t Release() noexcept override
    {
        const auto left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT Read(void* to, std::uint32_t size, std::uint32_t* read) noexcept override
    {
        const auto left = bytes_->size() - std::min<std::uint64_t>(position_, bytes_->size());
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, left));
        if (count > 0)
            std::memcpy(to, bytes_->data() + position_, count);
        position_ += count;
        if (read)
            *read = count;
        return count == size ? S_OK : S_FALSE;
    }

    HRESULT Write(const void* from, std::uint32_t size, std::uint32_t* written) noexcept override
    {
        if (written)
            *written = 0;
        if (size == 0)
            return S_OK;
        if (position_ + size > bytes_->size() && FAILED(SetSize(position_ + size)))
            return STG_E_MEDIUMFULL;
        std::memcpy(bytes_->data() + position_, from, size);
        position_ += size;
        if (written)
            *written = size;
        return S_OK;
    }

    HRESULT Seek(std::int64_t distance, std::uint32_t origin, std::uint64_t* position) noexcept override
    {
        std::uint64_t base = 0;
        switch (origin) {
        case STREAM_SEEK_SET:
            break;
        case STREAM_SEEK_CUR:
            base = position_;
            break;
        case STREAM_SEEK_END:
            base = bytes_->size();
            break;
        default:
            return STG_E_INVALIDFUNCTION;
        }
        const auto target = base + static_cast<std::uint64_t>(distance);
        if (target > static_cast<std::uint64_t>(INT64_MAX))
            return STG_E_INVALIDFUNCTION;
        position_ = target;
        if (position)
            *position = position_;
        return S_OK;
    }

    HRESULT SetSize(std::uint64_t size) noexcept override
    {
        try {
            bytes_->resize(size);
            return S_OK;
        } catch (const std::exception&) {
            return STG_E_MEDIUMFULL;
        }
    }

    HRESULT CopyTo(
        IStream* target, std::uint64_t size, std::uint64_t* read, std::uint64_t* written) noexcept override
    {
        std::uint64_t copied_in = 0;
        std::uint64_t copied_out = 0;
        HRESULT result = S_OK;
        std::array<std::uint8_t, 4096> chunk;
        while (copied_in < size && SUCCEEDED(result)) {
            std::uint32_t got = 0;
            std::uint32_t put = 0;
            Read(chunk.data(),
                static_cast<std::uint32_t>(std::min<std::uint64_t>(chunk.size(), size - copied_in)), &got);
            if (got == 0)
                break;
            result = target->Write(chunk.data(), got, &put);
            copied_in += got;
            copied_out += put;
        }
        if (read)
            *read = copied_in;
        if (written)
            *written = copied_out;
        return result;
    }

    HRESULT Commit(std::uint32_t) noexcept override { return S_OK; }
    HRESULT Revert() noexcept override { return S_OK; }
    HRESULT LockRegion(std::uint64_t, std::uint64_t, std::uint32_t) noexcept override
    {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT UnlockRegion(std::uint64_t, std::uint64_t, std::uint32_t) noexcept override
    {
        return STG_E_INVALIDFUNCTION;
    }

    HRESULT Stat(STATSTG* statistics, std::uint32_t) noexcept override
    {
        if (!statistics)
            return STG_E_INVALIDPOINTER;
        *statistics = {STGTY_STREAM, bytes_->size(), 0};
        return S_OK;
    }

    HRESULT Clone(IStream** copy) noexcept override
    {
        if (!copy)
            return STG_E_INVALIDPOINTER;
        auto* stream = new (std::nothrow) memory_stream(bytes_);
        *copy = stream;
        if (!stream)
            return E_OUTOFMEMORY;
        stream->position_ = position_;
        return S_OK;
    }

private:
    ~memory_stream() = default;

    std::uint32_t references_ = 1;
    std::uint64_t position_ = 0;
    std::shared_ptr<stream_bytes> bytes_;
};

} // namespace

IStream* CreateMemoryStream() noexcept
{
    try {
        return new memory_stream(std::make_shared<stream_bytes>());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace klv
