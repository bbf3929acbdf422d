#include "klv/streams/storage.h"

namespace klv {

int vSTORAGE::CopyTo(const vSTRING&) noexcept { return 0; }
int vSTORAGE::RenameElement(const vSTRING&, const vSTRING&) noexcept { return 0; }
int vSTORAGE::DestroyElement(const vSTRING&) noexcept { return 0; }
int vSTORAGE::MoveElementTo(const vSTRING&, const vSTRING&, const vSTRING&, std::uint32_t) noexcept
{
    return 0;
}
void vSTORAGE::SelectElements(const vSTRING&, fLIST*) noexcept { }

} // namespace klv
