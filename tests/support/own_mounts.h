// Mounts that belong to one test process alone.
#pragma once

#include <string>

namespace permora::test {

// From here on nobody else's mounting is seen by this process and what it starts, nor theirs by others; so
// drive letters stay as they are. The volumes of other tests are let go of: a second hold on them would keep
// their file systems from ending. Needs root. What went wrong; empty when all is well.
std::string EnterOwnMounts();

}  // namespace permora::test
