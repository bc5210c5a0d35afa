// A real browser without a screen, driven by tests over its own protocol for developers' tools.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace permora::test {

// Debian's chromium, with a profile of its own. A failure is in Problem(), and every later call does nothing.
class Browser {
  public:
    Browser();
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    enum class Scripts { kRun, kSwitchedOff };
    // Opens a file and waits until it is loaded.
    void Open(const std::string& path, Scripts scripts = Scripts::kRun);
    // The value of a JavaScript expression, which may be a promise; null after a failure.
    nlohmann::json Evaluate(const std::string& expression);

    // Every address that the page has asked for since it was opened.
    const std::vector<std::string>& Requests() const { return requests; }
    // What the browser has reported of the page: refusals by its policy, faults of its script.
    const std::vector<std::string>& Reports() const { return reports; }
    const std::string& Problem() const { return problem; }

  private:
    nlohmann::json Call(const std::string& method, const nlohmann::json& parameters);
    bool Read(nlohmann::json& message);
    void TakeEvent(const nlohmann::json& message);

    const TemporaryFolder profile;
    int toBrowser = -1;
    int fromBrowser = -1;
    int process = -1;
    int lastCall = 0;
    std::string session;
    std::string unread;
    bool isLoaded = false;
    std::vector<std::string> requests;
    std::vector<std::string> reports;
    std::string problem;
};

}  // namespace permora::test
