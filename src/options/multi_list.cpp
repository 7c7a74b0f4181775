#include "options/multi_list.h"

#include <syslog.h>

#include <filesystem>

#include "model/document_model.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

bool IsUsable(const PlistDict& row) {
  return row.GetInt("onOff") != 0 && !row.GetString("source").empty() && !row.GetString("destination").empty();
}

PlistDict* RowAt(PlistDict& multiDict, std::int64_t row) {
  PlistArray* rows = multiDict.GetArray("multiArray");
  if (rows == nullptr || row < 0 || row >= static_cast<std::int64_t>(rows->size())) return nullptr;
  return (*rows)[static_cast<std::size_t>(row)].AsDict();
}

const char* PathKey(MultiColumn column) { return column == MultiColumn::kSource ? "source" : "destination"; }
const char* DisplayKey(MultiColumn column) {
  return column == MultiColumn::kSource ? "srcPathDisplayArray" : "dstPathDisplayArray";
}

bool IsPathColumn(std::int64_t column) {
  return column == static_cast<std::int64_t>(MultiColumn::kSource) ||
         column == static_cast<std::int64_t>(MultiColumn::kDestination);
}

void StorePath(PlistDict& row, MultiColumn column, const std::string& path,
               const AddToAutoMount& addToAutoMount) {
  row.Set(PathKey(column), path);
  if (addToAutoMount) addToAutoMount(path);
}

}  // namespace

PlistArray ExecutiveMultiArray(const PlistDict& session) {
  PlistArray usable;
  const PlistDict* multi = session.GetDict("multiDict");
  const PlistArray* rows = multi ? multi->GetArray("multiArray") : nullptr;
  if (rows == nullptr) return usable;
  for (const PlistValue& value : *rows) {
    const PlistDict* row = value.AsDict();
    if (row != nullptr && IsUsable(*row)) usable.push_back(*row);
  }
  return usable;
}

std::int64_t CountMultiValid(const PlistDict& document, std::int64_t sessionIndex) {
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  return session ? static_cast<std::int64_t>(ExecutiveMultiArray(*session).size()) : 0;
}

std::optional<std::string> CheckMultiPanel(PlistDict& multiDict) {
  if (!multiDict.IsFlagOn("multiOn")) return std::nullopt;
  std::int64_t usable = 0;
  if (const PlistArray* rows = multiDict.GetArray("multiArray")) {
    for (std::size_t i = 0; i < rows->size(); ++i) {
      const PlistDict* row = (*rows)[i].AsDict();
      if (row == nullptr || !IsUsable(*row)) continue;
      ++usable;
      const std::string source = row->GetString("source");
      if (source == row->GetString("destination")) {
        return GLS("Can't set the same folder") + ":\r\"" + source + "\"\r" +
               GLS("as source and destination at the row") + " " + std::to_string(i + 1) + ".";
      }
    }
  }
  if (usable == 0) multiDict.Set("multiOn", 0);
  return std::nullopt;
}

MultiClick EditMultiRow(PlistDict& multiDict, std::int64_t rowIndex, std::int64_t column, MultiModifier modifier,
                        const std::string& home) {
  MultiClick click;
  PlistDict* row = RowAt(multiDict, rowIndex);
  if (row == nullptr || column < 0 || column > 3) return click;
  const auto which = static_cast<MultiColumn>(column);
  switch (which) {
    case MultiColumn::kOnOff:
      row->Set("onOff", row->GetInt("onOff") != 0 ? 0 : 1);
      click.action = MultiClick::Action::kToggled;
      return click;
    case MultiColumn::kDelete: {
      ::syslog(LOG_INFO, "EditMultiRow Delete row %ld, col %ld", static_cast<long>(rowIndex),
               static_cast<long>(column));
      PlistArray& rows = *multiDict.GetArray("multiArray");
      rows.erase(rows.begin() + rowIndex);
      click.action = MultiClick::Action::kDeleted;
      return click;
    }
    case MultiColumn::kSource:
    case MultiColumn::kDestination:
      break;
  }
  const std::string current = row->GetString(PathKey(which));
  switch (modifier) {
    case MultiModifier::kControl:
      click.action = MultiClick::Action::kRevealPath;
      click.path = current;
      return click;
    case MultiModifier::kOption:
      row->Set(PathKey(which), "");
      row->Remove(DisplayKey(which));
      // Both paths gone: the row is blank again, and a blank row is on.
      if (row->GetString("source").empty() && row->GetString("destination").empty()) row->Set("onOff", 1);
      click.action = MultiClick::Action::kCleared;
      return click;
    case MultiModifier::kNone:
      break;
  }
  std::error_code error;
  click.action = MultiClick::Action::kChoosePath;
  click.path = !current.empty() && std::filesystem::exists(current, error) ? current : home;
  click.prompt = GLS(which == MultiColumn::kSource ? "Choose the source Folder" : "Choose the destination Folder");
  return click;
}

void ChooseMultiPath(PlistDict& multiDict, std::int64_t rowIndex, MultiColumn column, const std::string& path,
                     const AddToAutoMount& addToAutoMount) {
  PlistDict* row = RowAt(multiDict, rowIndex);
  if (row == nullptr || !IsPathColumn(static_cast<std::int64_t>(column))) return;
  // Display components belong to a dropped path; a chosen one would not match them.
  row->Remove(DisplayKey(column));
  StorePath(*row, column, path, addToAutoMount);
  multiDict.Set("multiOn", 1);
}

bool DropOnMultiCell(PlistDict& multiDict, std::int64_t rowIndex, std::int64_t column, const std::string& path,
                     const std::vector<std::string>& displayComponents, const AddToAutoMount& addToAutoMount) {
  PlistDict* row = RowAt(multiDict, rowIndex);
  if (!multiDict.IsFlagOn("multiOn") || row == nullptr || !IsPathColumn(column) || path.empty()) return false;
  const auto which = static_cast<MultiColumn>(column);
  if (displayComponents.empty()) {
    row->Remove(DisplayKey(which));
  } else {
    PlistArray components(displayComponents.begin(), displayComponents.end());
    row->Set(DisplayKey(which), std::move(components));
  }
  StorePath(*row, which, path, addToAutoMount);
  return true;
}

}  // namespace marigold
