// Starting this program again with the rights of the administrator: a service of our own beside the system's.
//
// On Linux that is pkexec, which asks for the password, forgets the environment but for the screen under X11,
// and leaves the name of whoever asked. On Windows the system itself asks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace permora {

bool IsAdministrator();

// Whether this process has not got the rights, and who asks for them is installed.
bool CanAskForAdministrator();

enum class AdministratorStart : std::uint8_t {
    kStarted,
    kNobodyAsks,  // who asks for the rights is not installed
    kDismissed,   // by the user
    kRefused,     // the user may not have them, or nobody can ask here
    kNoPath,      // a path to hand on cannot be written for another process
    kReplaced,    // the program's file is no longer there, as after an update
    kFailed,      // the new process has ended before it had a window
};

enum class AdministratorWait : std::uint8_t { kForStart, kForEnd };

// Starts this program with the arguments and waits, for as long as the user thinks and then until the new
// process calls TellOfStart or, if that is asked for, ends: `exitCode` is then its own. Any thread.
AdministratorStart StartAsAdministrator(const std::vector<std::string>& arguments, AdministratorWait wait,
                                        int& exitCode);

// The absolute path of the user's display, for UseDisplayOf in the new process; empty when the screen is
// found without.
std::string DisplayForAdministrator();

// In the new process. Whether another user has started it, whose arguments are checked therefore.
bool IsStartedForUser();
// Connects to a display of that user, on which windows are shown then. False: nothing of that user's is
// there. While there is one thread.
bool UseDisplayOfUser(const std::string& path);
// Ends the wait of StartAsAdministrator. On Linux, standard output leads nowhere from then on.
void TellOfStart();

}  // namespace permora
