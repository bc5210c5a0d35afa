// What is not whole yet goes by a name of its own, ".permora-" and a number, until it is put in its place or
// given up. A process that is killed leaves it, and the next one that writes into the folder sweeps it.
#pragma once

#include <string>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

// A name for something that is not whole yet.
std::string TemporaryName();

// Marks a file that has such a name, or will have it, as being worked on: no sweep takes it while this
// opening of it lives. False when a sweep is at it just now. Where the file system has no locks, nothing is
// marked nor swept.
bool MarkUnfinished(int descriptor);

// Whether a name is still this object's, and to remove it then.
bool IsUnfinished(const ObjectHandle& folder, const std::string& name, const ObjectHandle& object);
void RemoveUnfinished(const ObjectHandle& folder, const std::string& name, const ObjectHandle& object);

// Removes the files with such names that belong to this process's user and are not marked, and the links,
// which cannot be. Whoever was about to put one of those in its place has to make it again. What cannot be
// removed stays.
void SweepUnfinished(const ObjectHandle& folder);

}  // namespace permora::host
