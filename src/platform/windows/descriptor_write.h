// Whole descriptors of opened objects, by the calls that carry nothing down.
#pragma once

#include "platform/change_recorder.h"
#include "platform/nt/security_descriptor.h"
#include "platform/resources.h"

namespace permora {

// Owner, group and access list of an object that is open for READ_CONTROL. ERROR_INVALID_SECURITY_DESCR for a
// damaged descriptor.
DWORD ReadDescriptor(HANDLE object, nt::SecurityDescriptor& descriptor);

// The parts in which two descriptors differ: owner, group, access list with its protection.
SECURITY_INFORMATION DifferentParts(const nt::SecurityDescriptor& one, const nt::SecurityDescriptor& other);
// The access that writing these parts takes.
DWORD WritingAccess(SECURITY_INFORMATION parts);

// Writes the parts in which `after` differs from `before`, to an object that is open for writing them.
DWORD WriteDescriptor(HANDLE object, const nt::SecurityDescriptor& before,
                      const nt::SecurityDescriptor& after);

// The descriptor as the history keeps it. Its bytes are laid out in one way, whatever the way in which a
// server or a volume hands them out. ERROR_INVALID_SECURITY_DESCR for a list that is too large.
DWORD StoreDescriptor(const nt::SecurityDescriptor& descriptor, StoredSecurity& stored);

// The record of a change, without the object's path. `object` is open for FILE_READ_ATTRIBUTES.
DWORD DescribeChange(HANDLE object, bool isFolder, const nt::SecurityDescriptor& before,
                     const nt::SecurityDescriptor& after, DescriptorChange& change);

}  // namespace permora
