#include "survey/survey_rows.h"

namespace permora {

void SurveyRows::Add(const SurveyRow& row) {
    rows.push_back({row.security, paths.Add(row.top, row.path), static_cast<std::uint32_t>(row.top),
                    row.remarks, row.error, row.kind});
}

SurveyRow SurveyRows::Row(std::size_t index, std::string& path) const {
    const KeptRow& row = rows[index];
    paths.Path(row.place, path);
    return {path, row.top, row.kind, row.remarks, row.security, row.error};
}

}  // namespace permora
