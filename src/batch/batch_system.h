#pragma once

namespace quillmere {

// The few things that the batch program asks of the operating system beyond files.

/// From here on an interrupt, a request to terminate or a lost terminal sets the flag behind
/// InterruptRequested; a second one ends the program at once.
void CatchInterrupts();
bool InterruptRequested();

bool StandardErrorIsTerminal();

}  // namespace quillmere
