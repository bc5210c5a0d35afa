// Stands in for the user in front of the message boxes of a test.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "platform/message_presenter.h"

namespace permora::test {

struct RecordedBox {
    std::string caption;
    std::string text;
    UINT type = 0;

    friend bool operator==(const RecordedBox& one, const RecordedBox& other) = default;
};

inline void PrintTo(const RecordedBox& box, std::ostream* stream) {
    *stream << '[' << box.caption << "] " << box.text << " (type " << box.type << ')';
}

// Records every box while it lives and answers each with `answer`. A box that the
// test has not taken when the presenter ends fails the test: no message goes by unnoticed.
class RecordingPresenter : public MessagePresenter {
  public:
    RecordingPresenter() : previous(thePresenters.messages.exchange(this)) {}
    RecordingPresenter(const RecordingPresenter&) = delete;
    RecordingPresenter& operator=(const RecordingPresenter&) = delete;
    ~RecordingPresenter() override {
        thePresenters.messages = previous;
        for (const RecordedBox& box : boxes)
            ADD_FAILURE() << "unexpected message box: " << ::testing::PrintToString(box);
    }

    int answer = IDOK;

    // The boxes shown since the last call.
    std::vector<RecordedBox> TakeBoxes() { return std::exchange(boxes, {}); }

    int Present(HWND, const char* text, const char* caption, UINT type) override {
        boxes.push_back({caption, text, type});
        return answer;
    }

  private:
    MessagePresenter* previous;
    std::vector<RecordedBox> boxes;
};

}  // namespace permora::test
