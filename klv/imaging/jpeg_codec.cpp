#include "klv/imaging/jpeg_session.h"

namespace klv::imaging {

namespace {

bool jpeg_recognises(std::span<const std::uint8_t> start)
{
    return start.size() > 2 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

} // namespace

jpeg_errors::jpeg_errors()
{
    jpeg_std_error(&fields_.manager);
    fields_.manager.error_exit = on_error;
    fields_.manager.emit_message = on_message;
}

void jpeg_errors::on_error(j_common_ptr session)
{
    std::longjmp(reinterpret_cast<fields*>(session->err)->jump, 1);
}

void jpeg_errors::on_message(j_common_ptr session, int level)
{
    constexpr int warning = -1;
    if (level != warning)
        return;
    ++session->err->num_warnings;
    if (session->err->msg_code == JWRN_HIT_MARKER)
        reinterpret_cast<fields*>(session->err)->data_ended = true;
}

const codec jpeg_codec{format_jpeg, jpeg_recognises, jpeg_info, jpeg_load, jpeg_save, nullptr};

} // namespace klv::imaging
