#include "klv/platform/system/network.h"

#include <algorithm>
#include <mutex>

namespace klv {

namespace {

struct disk_table {
    std::mutex guard;
    std::vector<disk_resource> connected;

    bool remove(std::string_view local_name)
    {
        return std::erase_if(connected, [&](const disk_resource& disk) {
            return disk.local_name == local_name;
        }) != 0;
    }
};

disk_table& disks()
{
    static disk_table table;
    return table;
}

} // namespace

void connect_disk(disk_resource resource)
{
    disk_table& table = disks();
    const std::scoped_lock lock(table.guard);
    table.remove(resource.local_name);
    table.connected.push_back(std::move(resource));
}

bool disconnect_disk(std::string_view local_name)
{
    disk_table& table = disks();
    const std::scoped_lock lock(table.guard);
    return table.remove(local_name);
}

std::vector<disk_resource> connected_disks()
{
    disk_table& table = disks();
    const std::scoped_lock lock(table.guard);
    return table.connected;
}

} // namespace klv
