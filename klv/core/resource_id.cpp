#include "klv/core/resource_id.h"

#include "klv/core/system.h"

namespace klv {

vRESID::vRESID(std::uint16_t id, const vMODULE* module) noexcept
    : instance_(module ? module->GetInstance() : vSYSTEM::Pointer()->GetInstance())
    , id_(id)
{
}

} // namespace klv
