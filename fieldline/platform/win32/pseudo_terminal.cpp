#include "fieldline/platform/pseudo_terminal.h"

namespace fieldline {

// Windows has serial lines in hardware and in drivers only.
bool PseudoTerminal::IsSupported() { return false; }
bool PseudoTerminal::Open() { return false; }
void PseudoTerminal::Close() {}
int PseudoTerminal::Read(BYTE*, int, int) { return -1; }
int PseudoTerminal::Write(const BYTE*, int) { return -1; }
std::uint32_t PseudoTerminal::Baud() const { return 0; }

}  // namespace fieldline
