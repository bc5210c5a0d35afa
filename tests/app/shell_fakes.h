// A desktop that opens objects as the test decides, and records the requests.
#pragma once

#include <string>
#include <vector>

namespace permora::test {

class ShellFakes {
  public:
    ShellFakes();
    ~ShellFakes();
    ShellFakes(const ShellFakes&) = delete;
    ShellFakes& operator=(const ShellFakes&) = delete;

    // Requests that begin with one of these fail; all others succeed.
    std::vector<std::string> refused;
    // In order: "open TARGET", or the command line.
    std::vector<std::string> requests;

    bool Serve(const std::string& request);
};

}  // namespace permora::test
