// Objects of several trees as rows of a page: a million take some 40 bytes each beside their names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "results/result_tops.h"
#include "survey/tree_paths.h"

namespace permora {

// "File", "Folder", "Link", "Other".
const char* KindText(TreeObjectKind kind);

class ObjectRows {
  public:
    // `walked` outlives this.
    explicit ObjectRows(const std::vector<ResultTop>& walked) : tops(walked) {}

    // In the order of the walks; `path` is below its top.
    void Add(std::size_t top, std::string_view path, TreeObjectKind kind) {
        rows.push_back({paths.Add(top, path), static_cast<std::uint32_t>(top), kind});
    }
    std::size_t Count() const { return rows.size(); }

    std::string Name(std::size_t row) const;    // "letter"; of a drive's root "C:\"
    std::string Folder(std::size_t row) const;  // "C:\data"; empty above a drive's root
    TreeObjectKind Kind(std::size_t row) const { return rows[row].kind; }
    ResultObject Object(std::size_t row) const;

  private:
    struct Row {
        std::uint32_t place;
        std::uint32_t top;
        TreeObjectKind kind;
    };

    const std::vector<ResultTop>& tops;
    TreePaths paths;
    std::deque<Row> rows;
};

}  // namespace permora
