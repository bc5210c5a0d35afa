// Starts the toolkit without a display for all tests of this program.
#include <gtest/gtest.h>

#include <memory>

#include "framework/qt/application.h"

namespace permora {
namespace {

class Offscreen : public ::testing::Environment {
  public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QtApplication>(argumentCount, arguments);
    }
    void TearDown() override { application.reset(); }

  private:
    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QtApplication> application;
};

[[maybe_unused]] const ::testing::Environment* const kOffscreen =
    ::testing::AddGlobalTestEnvironment(new Offscreen);

}  // namespace
}  // namespace permora
