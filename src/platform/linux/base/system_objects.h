// What CloseHandle closes.
#pragma once

#include "platform/linux/base/handle_table.h"

namespace permora::host {

class SystemObject {
  public:
    SystemObject() = default;
    SystemObject(const SystemObject&) = delete;
    SystemObject& operator=(const SystemObject&) = delete;
    virtual ~SystemObject() = default;
};

// All of the process that are open, of every kind.
HandleTable<SystemObject>& SystemObjects();

}  // namespace permora::host
