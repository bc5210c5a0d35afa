// What a survey says, as text.
#pragma once

#include <string>

#include "survey/survey.h"
#include "tests/support/access_lists.h"

namespace permora::test {

inline std::string CodesOf(RemarkSet remarks) {
    std::string codes;
    for (const Remark remark : remarks)
        codes += std::string(codes.empty() ? "" : " ") + CodeOf(remark);
    return codes;
}

// A line "path: codes" for each row.
class RowTexts : public SurveyObserver {
  public:
    bool Begin(std::string_view path) override { return path != end; }
    void Take(const SurveyRow& row) override {
        text += std::string(row.path) + ": " + CodesOf(row.remarks) + '\n';
    }

    std::string text;
    std::string end = "no such path";  // at which the walk is ended
};

inline std::string SurveyText(const std::string& hostPath) {
    Survey survey;
    RowTexts rows;
    const DWORD error = survey.Walk(Held(hostPath), rows);
    return error == ERROR_SUCCESS ? rows.text : "error " + std::to_string(error);
}

}  // namespace permora::test
