#include "klv/platform/system/network.h"

#include <algorithm>

namespace klv {

namespace {

std::vector<disk_resource>& disks()
{
    static std::vector<disk_resource> connected;
    return connected;
}

} // namespace

void connect_disk(disk_resource resource)
{
    disconnect_disk(resource.local_name);
    disks().push_back(std::move(resource));
}

bool disconnect_disk(std::string_view local_name)
{
    return std::erase_if(disks(), [&](const disk_resource& disk) { return disk.local_name == local_name; })
        != 0;
}

const std::vector<disk_resource>& connected_disks() noexcept { return disks(); }

} // namespace klv
