// A system that starts no threads, on demand. For programs linked with --wrap=CreateThread.
#pragma once

namespace permora::test {

// While true, CreateThread fails with ERROR_NOT_ENOUGH_MEMORY.
extern bool areThreadsRefused;

}  // namespace permora::test
