// From the host's times to the system's.
#pragma once

#include <ctime>

#include "platform/api/time.h"

namespace permora::host {

// Times that the system cannot write become the nearest that it can.
FILETIME FileTimeOf(const timespec& time);

}  // namespace permora::host
