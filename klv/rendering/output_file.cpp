#include "klv/rendering/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <sys/stat.h>

namespace klv {
namespace {

bool is_regular(const vSTRING& name)
{
    struct stat about { };
    return stat(name(), &about) == 0 && S_ISREG(about.st_mode);
}

} // namespace

output_file::output_file(std::string_view name) noexcept
    : name_(name)
    , file_((errno = 0, name_), vFILE::truncate)
{
}

output_file::~output_file()
{
    if (kept_ || file_.Status() == vSTREAM_OPEN_ERROR)
        return;
    file_.Close();
    if (is_regular(name_))
        std::remove(name_());
}

render_status output_file::status() const noexcept
{
    const auto status = file_.Status();
    if (status == vSTREAM_OK || status == vSTREAM_END)
        return {};
    return {render_code::unwritable, vSTRING(std::strerror(errno ? errno : EIO))};
}

render_status output_file::keep() noexcept
{
    render_status written = status();
    kept_ = written.ok();
    return written;
}

} // namespace klv
