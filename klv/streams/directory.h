#pragma once

#include "klv/core/list.h"
#include "klv/streams/file.h"
#include "klv/streams/storage.h"

#include <cstdint>

namespace klv {

/// A directory of the file system. Its name is a path that ends with a backslash.
class vDIRECTORY : public vSTORAGE {
public:
    /// Takes path, or the current directory when it is empty; makes it and makes it current when create is
    /// nonzero.
    explicit vDIRECTORY(const vSTRING& path, std::uint32_t mode = 0, int create = 0) noexcept;
    ~vDIRECTORY() override;
    vDIRECTORY(const vDIRECTORY&) = delete;
    vDIRECTORY& operator=(const vDIRECTORY&) = delete;

    vSTREAM* CreateStream(const vSTRING& name, std::uint32_t mode) noexcept override;
    vSTREAM* OpenStream(const vSTRING& name, std::uint32_t mode) noexcept override;
    using vSTORAGE::SelectElements;
    /// The name, with a mapped drive turned into the name of its network share.
    vSTRING GetName() noexcept override;
    /// A new stream over the file, owned by the directory. \return null when memory is out.
    virtual vFILE* CreateFileA(const vSTRING& name, std::uint32_t mode) noexcept;
    virtual vFILE* OpenFile(const vSTRING& name, std::uint32_t mode) noexcept;
    /// Appends a new vSTOREITERATOR to list for every entry that matches pattern; whoever owns the list
    /// deletes them.
    virtual void SelectElements(const vSTRING& pattern, fLIST* list) const noexcept;
    /// \return 1 when the directory has such a file, else 0.
    virtual int FileExists(const vSTRING& name) noexcept;
    /// \return 1 when the file has been deleted, else 0.
    virtual int RemoveFile(const vSTRING& name) noexcept;

    /// Makes the directory current. \return 1 on success, else 0.
    int Attach() noexcept;
    /// Goes to the parent of the current directory and takes its name. \return 1 on success, else 0.
    int AttachToParent() noexcept;

    /// The platform's temporary directory, "c:\" when there is none.
    static vSTRING TempDirectory() noexcept;

private:
    vSTRING full_path(const vSTRING& name) noexcept;

    fSTACK files_; // of vFILE, owned
};

} // namespace klv
