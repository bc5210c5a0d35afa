#include <unistd.h>

#include <cstdio>

#include "platform/api/base.h"

void WINAPI ExitProcess(UINT code) {
    std::fflush(nullptr);
    // The host keeps only the low eight bits. A failure code whose low bits are zero must not become success.
    const UINT visible = code & 0xFFU;
    _exit(static_cast<int>(code != 0 && visible == 0 ? 1U : visible));
}
