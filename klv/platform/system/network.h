#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace klv {

/// A directory of this machine that is known by a drive letter and the name of a network share.
struct disk_resource {
    std::string local_name; ///< the drive, as "Z:"
    std::string remote_name; ///< the share, as "\\server\share"; empty for a local drive
    std::string directory; ///< where it is mounted, without a trailing separator
};

/// Connects a drive; one of the same local name is replaced.
void connect_disk(disk_resource resource);
/// \return false when no drive of that name is connected.
bool disconnect_disk(std::string_view local_name);
/// The drives that are connected now, in the order of their connection.
std::vector<disk_resource> connected_disks();

} // namespace klv
