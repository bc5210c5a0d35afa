#include "tests/support/browser.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include "tests/support/patience.h"

namespace permora::test {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

// The protocol's descriptors in the browser.
constexpr int kItsInput = 3;
constexpr int kItsOutput = 4;

}  // namespace

Browser::Browser() {
    int input[2];
    int output[2];
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
        problem = "no pipe";
        return;
    }
    const std::string folder = "--user-data-dir=" + profile.Path();
    const std::array<const char*, 12> arguments = {"chromium",
                                                   "--headless",
                                                   "--no-sandbox",
                                                   "--disable-gpu",
                                                   "--no-first-run",
                                                   "--disable-background-networking",
                                                   folder.c_str(),
                                                   "--disable-component-update",
                                                   "--remote-debugging-pipe",
                                                   "--disable-sync",
                                                   "about:blank",
                                                   nullptr};
    process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setsid();
        // Out of the way of the numbers that the browser expects.
        const int in = fcntl(input[0], F_DUPFD, 10);
        const int out = fcntl(output[1], F_DUPFD, 10);
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, STDIN_FILENO);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        dup2(in, kItsInput);
        dup2(out, kItsOutput);
        execvp(arguments[0], const_cast<char* const*>(arguments.data()));
        _exit(127);
    }
    close(input[0]);
    close(output[1]);
    toBrowser = input[1];
    fromBrowser = output[0];
    const json target = Call("Target.createTarget", {{"url", "about:blank"}});
    const json attached =
        Call("Target.attachToTarget", {{"targetId", target.value("targetId", "")}, {"flatten", true}});
    session = attached.value("sessionId", "");
    for (const char* domain : {"Page.enable", "Network.enable", "Runtime.enable", "Log.enable"})
        Call(domain, json::object());
}

Browser::~Browser() {
    if (process <= 0) return;
    session.clear();
    if (problem.empty()) Call("Browser.close", json::object());
    close(toBrowser);
    close(fromBrowser);
    for (int i = 0; i < 100 && waitpid(process, nullptr, WNOHANG) == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (i == 60) kill(-process, SIGKILL);
    }
}

bool Browser::Read(json& message) {
    const auto end = Clock::now() + kPatience;
    std::size_t length = unread.find('\0');
    while (length == unread.npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting{fromBrowser, POLLIN, 0};
        std::array<char, 65536> block{};
        if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) <= 0) {
            problem = "the browser does not answer";
            return false;
        }
        const ssize_t count = read(fromBrowser, block.data(), block.size());
        if (count <= 0) {
            problem = "the browser has ended";
            return false;
        }
        unread.append(block.data(), static_cast<std::size_t>(count));
        length = unread.find('\0');
    }
    message = json::parse(unread.substr(0, length), nullptr, false);
    unread.erase(0, length + 1);
    return true;
}

void Browser::TakeEvent(const json& message) {
    const std::string method = message.value("method", "");
    if (!message.contains("params")) return;
    const json& parameters = message["params"];
    if (method == "Page.loadEventFired") isLoaded = true;
    if (method == "Network.requestWillBeSent") requests.push_back(parameters["request"].value("url", ""));
    if (method == "Log.entryAdded") reports.push_back(parameters["entry"].value("text", ""));
    if (method == "Runtime.exceptionThrown") reports.push_back(parameters["exceptionDetails"].dump());
}

json Browser::Call(const std::string& method, const json& parameters) {
    if (!problem.empty()) return json::object();
    json call = {{"id", ++lastCall}, {"method", method}, {"params", parameters}};
    if (!session.empty()) call["sessionId"] = session;
    const std::string text = call.dump();
    if (write(toBrowser, text.c_str(), text.size() + 1) != static_cast<ssize_t>(text.size() + 1)) {
        problem = "the browser takes no calls";
        return json::object();
    }
    for (json message; Read(message);) {
        TakeEvent(message);
        if (message.value("id", 0) != lastCall) continue;
        if (message.contains("error")) problem = method + ": " + message["error"].dump();
        return message.value("result", json::object());
    }
    return json::object();
}

void Browser::Open(const std::string& path, Scripts scripts) {
    Call("Emulation.setScriptExecutionDisabled", {{"value", scripts == Scripts::kSwitchedOff}});
    requests.clear();
    reports.clear();
    isLoaded = false;
    Call("Page.navigate", {{"url", "file://" + path}});
    for (json message; problem.empty() && !isLoaded && Read(message);)
        TakeEvent(message);
}

json Browser::Evaluate(const std::string& expression) {
    const json answer = Call("Runtime.evaluate",
                             {{"expression", expression}, {"returnByValue", true}, {"awaitPromise", true}});
    if (answer.contains("exceptionDetails")) reports.push_back(answer["exceptionDetails"].dump());
    return answer.contains("result") ? answer["result"].value("value", json()) : json();
}

}  // namespace permora::test
