#include "platform/process_start.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace permora {

void PrepareProcess() {
    // Libraries that are loaded later come from the system's folder alone, never from the current directory
    // or from one on the path.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    // A drive without a medium is an error code, not a box that waits for somebody.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    // What is printed is the same bytes on each system. A stream that is closed here stays closed: the
    // runtime gives its number to no file.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

}  // namespace permora
