// A variable of the environment that a test changes.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace permora::test {

// The variable has `value` while this object lives, and its former state afterwards, so that later tests of
// the same process find their tools and folders.
class ScopedVariable {
  public:
    ScopedVariable(std::string variable, const std::string& value) : name(std::move(variable)) {
        if (const char* old = getenv(name.c_str())) before = old;
        setenv(name.c_str(), value.c_str(), 1);
    }
    ~ScopedVariable() { before ? setenv(name.c_str(), before->c_str(), 1) : unsetenv(name.c_str()); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    const std::string name;
    std::optional<std::string> before;
};

}  // namespace permora::test
