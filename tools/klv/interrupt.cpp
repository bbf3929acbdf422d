#include "tools/klv/interrupt.h"

#include <csignal>

namespace klv::tool {

namespace {

volatile std::sig_atomic_t interrupt_seen = 0;

void on_interrupt(int)
{
    interrupt_seen = 1;
    std::signal(SIGINT, SIG_DFL);
}

} // namespace

void install_interrupt_handler() { std::signal(SIGINT, on_interrupt); }

bool interrupted() { return interrupt_seen != 0; }

} // namespace klv::tool
