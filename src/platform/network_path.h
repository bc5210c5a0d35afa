// Paths of what other servers share: "\\server\share\folder".
#pragma once

#include <string>
#include <string_view>

namespace permora {

// Whether a text begins like one: "\\" and a name. "\\?\" and "\\.\" lead to devices.
bool IsNetworkPath(std::string_view text);

// The path here (files.h) of what a network path names: it begins where that share is mounted, or a folder of
// it in which the object lies; of several such places, at the first that this process may enter. Letter case
// does not matter; a server has the name or address by which it was mounted, since nobody is asked which
// others it has. Empty when nothing fitting is certain to be mounted.
//
// Text and the table of mounts; a share is only looked at, which may take as long as its server, when it is
// mounted several times. On Windows the system knows such paths, and each is its own.
std::string PathFromNetwork(std::string_view networkPath);

// The other way round: for a path with drive letter on a mounted share. Empty for all others.
std::string NetworkFromPath(const std::string& path);

// The server on which what a path of files.h leads to lies, "\\server"; empty for what lies here. By the
// path's text and the table of mounts. On Windows always empty: the system's own services find the server by
// the path.
std::string ServerOfPath(const std::string& path);

// The host's command that mounts the share of a network path, for a user to complete. Empty where there is
// none, and for a path that names no share.
std::string MountCommandFor(std::string_view networkPath);

}  // namespace permora
