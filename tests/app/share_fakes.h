// A machine with the shares of the test's choice.
#pragma once

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/network.h"

namespace permora::test {

struct FakeShare {
    std::string name;
    std::string path;
    NET_API_STATUS readError = NERR_Success;  // of each question about this one
    NET_API_STATUS removeError = NERR_Success;
};

// While it exists, it replaces the machine's own shares, and returns one for each call.
class ShareFakes {
  public:
    ShareFakes();
    ~ShareFakes();
    ShareFakes(const ShareFakes&) = delete;
    ShareFakes& operator=(const ShareFakes&) = delete;

    std::vector<FakeShare> shares;
    NET_API_STATUS listError = NERR_Success;  // once the shares above are handed out
};

}  // namespace permora::test
