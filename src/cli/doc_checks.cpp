#include "cli/doc_checks.h"

#include "model/document_model.h"
#include "options/filter_rows.h"
#include "options/multi_list.h"

namespace marigold {
namespace {

// Every filter row that is not the blank row of a new document must be one the Filters panel
// would store.
std::optional<std::string> CheckFilterRows(const PlistDict& session) {
  const PlistDict* filters = session.GetDict("filterDict");
  const PlistArray* rows = filters ? filters->GetArray("filterArray") : nullptr;
  if (rows == nullptr) return std::nullopt;
  const PlistDict blank = DefaultFilterRow();
  for (std::size_t i = 0; i < rows->size(); ++i) {
    const PlistDict* row = (*rows)[i].AsDict();
    if (row == nullptr || *row == blank) continue;
    if (auto message = SetFilterRow(*row)) return "filterDict.filterArray." + std::to_string(i) + ": " + *message;
  }
  return std::nullopt;
}

// The multiple list as its panel checks it when it is left.
std::optional<std::string> CheckMultipleList(const PlistDict& session) {
  const PlistDict* multi = session.GetDict("multiDict");
  if (multi == nullptr) return std::nullopt;
  PlistDict copy = *multi;
  return CheckMultiPanel(copy);
}

}  // namespace

const std::vector<SessionCheck>& DocSessionChecks() {
  // `doc set` refuses the whole edit on the first message and leaves the file as it was.
  static const std::vector<SessionCheck> checks{CheckFilterRows, CheckMultipleList};
  return checks;
}

}  // namespace marigold
