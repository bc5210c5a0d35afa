// What each program does before anything else.
#pragma once

namespace permora {

// Takes the numbers of standard streams that this process was started without, so that no file that is opened
// later gets one of them, and with it the messages that are written there. To read or write such a stream
// fails as before. And what would make a file larger than this process may (ulimit -f) fails, where the
// system would otherwise end the process in the middle of its work. As root, forgets what another user's
// environment says about where libraries find code, settings and files, and says so on standard error.
void PrepareProcess();

}  // namespace permora
