#pragma once

namespace klv::tool {

/// Makes Ctrl-C ask the work under way to stop, so that it ends cleanly; a second Ctrl-C ends the program.
void install_interrupt_handler();
bool interrupted();

} // namespace klv::tool
