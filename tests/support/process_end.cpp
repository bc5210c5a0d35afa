// Part of every test program. The program ends with code 0 after its fatal message boxes, and a test program
// that did so in the middle of a test would have passed.
#include <gtest/gtest.h>

#include "platform/api/base.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

[[noreturn]] void __real_ExitProcess(UINT code);
[[noreturn]] void __wrap_ExitProcess(UINT code) {
    const bool isTesting = testing::UnitTest::GetInstance()->current_test_info() != nullptr;
    if (isTesting && !testing::internal::InDeathTestChild()) {
        std::puts("[  FAILED  ] the test ended the program");
        code = 1;
    }
    __real_ExitProcess(code);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
