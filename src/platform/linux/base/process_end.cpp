#include <cstdio>
#include <cstdlib>

#include "platform/api/base.h"

// Threads may still be at work, so nothing is destroyed; what must not outlive the process is
// (std::at_quick_exit).
void WINAPI ExitProcess(UINT code) {
    std::fflush(nullptr);
    // The host keeps only the low eight bits. A failure code whose low bits are zero must not become success.
    const UINT visible = code & 0xFFU;
    std::quick_exit(static_cast<int>(code != 0 && visible == 0 ? 1U : visible));
}
