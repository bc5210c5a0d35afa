// The system services under the security model, replaced one by one at link time (CMakeLists.txt).
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/libraries.h"
#include "platform/api/security.h"

namespace permora::test {

// One account of the made-up account database.
struct FakeAccount {
    std::string sidText;
    std::string domain;
    std::string name;
    SID_NAME_USE use;
};

// While it lives, services that have a function here are answered by it. Without one, the account database is
// `accounts`, the other services are the real ones.
class ServiceFakes {
  public:
    ServiceFakes();
    ServiceFakes(const ServiceFakes&) = delete;
    ServiceFakes& operator=(const ServiceFakes&) = delete;
    ~ServiceFakes();

    std::vector<FakeAccount> accounts;
    // The error of every account look-up, when it is not 0.
    DWORD accountError = ERROR_SUCCESS;
    // The number of further allocations (local or private heap, heaps included) that succeed.
    int allocationsLeft = 1'000'000;

    // The name that no library has a function for.
    std::string missingFunction;

    std::function<HMODULE(LPCSTR)> loadLibrary;
};

}  // namespace permora::test
