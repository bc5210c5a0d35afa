// What windows of results ask of the program.
#pragma once

#include <vector>

#include "framework/window.h"
#include "results/result_source.h"

namespace permora {

class ResultsHost {
  public:
    virtual ~ResultsHost() = default;
    // Shows the security editor on these objects, of which there is at least one.
    virtual void EditResults(CWnd& owner, const std::vector<ResultObject>& objects) = 0;
    // Shows the object in the list of its folder.
    virtual void ShowInFolder(const ResultObject& object) = 0;
};

}  // namespace permora
