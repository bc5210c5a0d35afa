// A current directory for one thread alone.
#pragma once

namespace permora {

// From now on, no other thread sees the calling thread change its current directory, and it sees none of
// theirs. False, and nothing has changed, where the system has one current directory for the whole process.
bool TakeOwnDirectory();

}  // namespace permora
