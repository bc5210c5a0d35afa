#include "platform/api/base.h"

namespace {

thread_local DWORD lastError = 0;

}  // namespace

DWORD WINAPI GetLastError() {
    return lastError;
}

void WINAPI SetLastError(DWORD code) {
    lastError = code;
}
