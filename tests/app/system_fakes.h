// A registry of the test's own, a system of any version, and any command line.
#pragma once

#include <string>

#include "platform/api/base.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {

// While it lives the user's registry is empty, HKEY_CLASSES_ROOT a key of it, and the system's version the
// one below.
class SystemFakes {
  public:
    SystemFakes();
    ~SystemFakes();
    SystemFakes(const SystemFakes&) = delete;
    SystemFakes& operator=(const SystemFakes&) = delete;

    DWORD majorVersion = 6;
    // The error of every change of the registry, when it is not 0.
    DWORD writeError = 0;
    std::string commandLine = "\"permora\"";
    std::string programPath = R"(C:\nowhere\permora)";

  private:
    test::TemporaryFolder folder;
};

}  // namespace permora::test
