// Extended attributes of an object held by a handle. Unless that is readable they go through /proc/self/fd,
// so that links and objects that cannot be opened for reading are reached too, and a name that changed
// meanwhile does not matter.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

// Whether an errno value says that the object has no such attribute, or the file system none of the kind.
bool IsAbsent(int error);

// Reads the whole attribute into `value` (whose capacity is reused). Returns 0, or the errno value: ENODATA
// when the object has none, ENOTSUP when the file system has no such attributes. `value` is unspecified after
// a failure.
int ReadExtendedAttribute(const ObjectHandle& object, const char* name, std::vector<std::uint8_t>& value);

// 0 when the object has the attribute, else the errno value; for questions about what a volume can hold.
int AskExtendedAttribute(const ObjectHandle& object, const char* name);

// Reads the attribute of the entry `hostName` of an open folder, a link itself and never its target, for
// those who go through many entries: two calls fewer than a handle costs. Otherwise as above.
int ReadExtendedAttributeAt(int folder, const char* hostName, const char* name,
                            std::vector<std::uint8_t>& value);

// The names of the object's attributes. Returns 0 or an errno value.
int ListExtendedAttributes(const ObjectHandle& object, std::vector<std::string>& names);

// The texts of such a list, in which each ends with a NUL.
std::vector<std::string> SplitAttributeList(std::span<const std::uint8_t> list);

// Whether the volume has room left. Then ENOSPC from below says that the attribute alone is too large: file
// systems with little room beside an object (ext4 has one block) call that a full disk.
bool HasRoom(const ObjectHandle& object);

// Replaces the attribute in one call; the object holds either the old value or the new one. Returns 0 or an
// errno.
int WriteExtendedAttribute(const ObjectHandle& object, const char* name, std::span<const std::uint8_t> value);

// Removes the attribute. Returns 0, also when the object has none, or an errno value.
int RemoveExtendedAttribute(const ObjectHandle& object, const char* name);

}  // namespace permora::host
