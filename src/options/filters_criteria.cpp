#include "options/filters_criteria.h"

#include <cmath>
#include <cstdlib>

#include "options/filter_rows.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

template <typename Rule>
Rule RuleOf(std::int64_t op, std::initializer_list<Rule> byOperator, Rule never) {
  if (op < 0 || op >= static_cast<std::int64_t>(byOperator.size())) return never;
  return byOperator.begin()[op];
}

DayTest CompileDay(const PlistDict& row, const std::string& prefix, const FilterClock& clock) {
  DayTest test;
  std::optional<LocalDay> day;
  const std::int64_t op = row.GetInt(prefix + "Pop");
  if (op >= 0 && op <= 3) {
    test.rule = RuleOf(op, {DayRule::kOn, DayRule::kBefore, DayRule::kAfter, DayRule::kNotOn}, DayRule::kNever);
    day = LocalDayOf(FilterFieldInteger(row, prefix + "Year").value_or(2011),
                     FilterFieldInteger(row, prefix + "Month").value_or(1),
                     FilterFieldInteger(row, prefix + "Day").value_or(1));
  } else if (op == 5 || op == 6) {  // today, yesterday; 4 is the menu's separator
    test.rule = DayRule::kOn;
    day = op == 5 ? clock.today : clock.yesterday;
  }
  if (!day) test.rule = DayRule::kNever;
  if (day) test.day = *day;
  return test;
}

bool DayHolds(const DayTest& test, std::int64_t seconds) {
  switch (test.rule) {
    case DayRule::kOn:
      return seconds >= test.day.start && seconds < test.day.end;
    case DayRule::kBefore:
      return seconds < test.day.start;
    case DayRule::kAfter:
      return seconds >= test.day.end;
    case DayRule::kNotOn:
      return seconds < test.day.start || seconds >= test.day.end;
    case DayRule::kNever:
      return false;
  }
  return false;
}

// Codes are compared in their quoted text form; an item here has the empty code, "''".
bool CodeHolds(const PlistDict& row, const char* pop, const char* field) {
  const bool equal = "'" + row.GetString(field) + "'" == "''";
  switch (row.GetInt(pop)) {
    case 0:
      return equal;
    case 1:
      return !equal;
    default:
      return false;
  }
}

AccountTest CompileAccount(const PlistDict& row, const char* pop, const char* field) {
  AccountTest test;
  test.rule = RuleOf(row.GetInt(pop),
                     {AccountRule::kNameEquals, AccountRule::kNameDiffers, AccountRule::kIdEquals, AccountRule::kIdDiffers},
                     AccountRule::kNever);
  test.name = row.GetString(field);
  // Read as a text field's integer value: leading digits count, anything else is 0.
  test.id = std::strtoll(test.name.c_str(), nullptr, 10);
  return test;
}

bool AccountHolds(const AccountTest& test, std::uint32_t id, const std::optional<std::string>* name) {
  switch (test.rule) {
    case AccountRule::kNameEquals:
      return *name && **name == test.name;
    case AccountRule::kNameDiffers:
      return !(*name && **name == test.name);
    case AccountRule::kIdEquals:
      return static_cast<std::int64_t>(id) == test.id;
    case AccountRule::kIdDiffers:
      return static_cast<std::int64_t>(id) != test.id;
    case AccountRule::kNever:
      return false;
  }
  return false;
}

bool NeedsName(AccountRule rule) { return rule == AccountRule::kNameEquals || rule == AccountRule::kNameDiffers; }

bool NameHolds(const CompiledFilterRow& row, FilterItem& item) {
  if (row.nameRule == NameRule::kNever) return false;
  const std::string& name = item.FoldedName();
  const std::string& text = row.foldedName;
  switch (row.nameRule) {
    case NameRule::kContains:
      return name.find(text) != std::string::npos;
    case NameRule::kBegins:
      return name.starts_with(text);
    case NameRule::kEnds:
      return name.ends_with(text);
    case NameRule::kEquals:
      return name == text;
    case NameRule::kDiffers:
      return name != text;
    case NameRule::kLacks:
      return name.find(text) == std::string::npos;
    case NameRule::kNever:
      return false;
  }
  return false;
}

bool KindHolds(KindRule rule, const ItemAttributes& attributes) {
  switch (rule) {
    case KindRule::kNotFolder:
      return !attributes.IsReallyFolder();
    case KindRule::kFolder:
      return attributes.IsReallyFolder();
    case KindRule::kAlias:  // there are no alias files here
      return false;
    case KindRule::kSymbolicLink:
      return attributes.kind == ItemKind::kSymlink;
    case KindRule::kNever:
      return false;
  }
  return false;
}

bool SizeHolds(const CompiledFilterRow& row, std::uint64_t size) {
  const auto bytes = static_cast<long double>(size);
  switch (row.sizeRule) {
    case SizeRule::kEqual:
      return bytes == row.sizeBytes;
    case SizeRule::kSmaller:
      return bytes < row.sizeBytes;
    case SizeRule::kLarger:
      return bytes > row.sizeBytes;
    case SizeRule::kNever:
      return false;
  }
  return false;
}

}  // namespace

FilterClock FilterClock::At(PlistDate now) { return FilterClock{LocalDayHolding(now), LocalDayBefore(now)}; }

CompiledFilterRow CompileFilterRow(const PlistDict& row, const FilterClock& clock) {
  CompiledFilterRow c;
  c.nameOn = row.IsFlagOn("filterFileNameOn");
  c.nameRule = RuleOf(row.GetInt("filterFileNamePop"),
                      {NameRule::kContains, NameRule::kBegins, NameRule::kEnds, NameRule::kEquals, NameRule::kDiffers,
                       NameRule::kLacks},
                      NameRule::kNever);
  c.foldedName = CaseFolded(row.GetString("filterFileNameField"));
  c.creationOn = row.IsFlagOn("filterCreationDateOn");
  if (c.creationOn) c.creation = CompileDay(row, "filterCreationDate", clock);
  c.modificationOn = row.IsFlagOn("filterModificationDateOn");
  if (c.modificationOn) c.modification = CompileDay(row, "filterModificationDate", clock);
  c.typeOn = row.IsFlagOn("filterTypeOn");
  c.typeHolds = CodeHolds(row, "filterTypePop", "filterTypeField");
  c.creatorOn = row.IsFlagOn("filterCreatorOn");
  c.creatorHolds = CodeHolds(row, "filterCreatorPop", "filterCreatorField");
  c.kindOn = row.IsFlagOn("filterKindOn");
  c.kindRule = RuleOf(row.GetInt("filterKindPop"),
                      {KindRule::kNotFolder, KindRule::kFolder, KindRule::kAlias, KindRule::kSymbolicLink},
                      KindRule::kNever);
  c.sizeOn = row.IsFlagOn("filterFileSizeOn");
  c.sizeRule = RuleOf(row.GetInt("filterFileSizePop"), {SizeRule::kEqual, SizeRule::kSmaller, SizeRule::kLarger},
                      SizeRule::kNever);
  const auto unit = static_cast<long double>(row.GetInt("filterFileSizeBytesPop"));
  c.sizeBytes = static_cast<long double>(FilterFieldSize(row).value_or(0)) * std::pow(1024.0L, unit);
  c.ownerOn = row.IsFlagOn("filterOwnerOn");
  c.owner = CompileAccount(row, "filterOwnerPop", "filterOwnerField");
  c.groupOn = row.IsFlagOn("filterGroupOn");
  c.group = CompileAccount(row, "filterGroupPop", "filterGroupField");
  return c;
}

const std::string& FilterItem::FoldedName() {
  if (!mFolded) mFolded = CaseFolded(mName);
  return *mFolded;
}

RowMatch MatchFilterRow(const CompiledFilterRow& row, FilterItem& item, AccountNames& names) {
  const ItemAttributes& a = item.attributes;
  if (row.nameOn && !NameHolds(row, item)) return RowMatch::kFails;
  if (row.creationOn) {
    if (!a.creationTime) return RowMatch::kNoCreationDate;
    if (!DayHolds(row.creation, a.creationTime->seconds)) return RowMatch::kFails;
  }
  if (row.modificationOn && !DayHolds(row.modification, a.modificationTime.seconds)) return RowMatch::kFails;
  if (row.typeOn && !row.typeHolds) return RowMatch::kFails;
  if (row.creatorOn && !row.creatorHolds) return RowMatch::kFails;
  if (row.kindOn && !KindHolds(row.kindRule, a)) return RowMatch::kFails;
  if (row.sizeOn && !SizeHolds(row, a.size)) return RowMatch::kFails;
  if (row.ownerOn) {
    const auto* name = NeedsName(row.owner.rule) ? &names.OwnerName(a.uid) : nullptr;
    if (!AccountHolds(row.owner, a.uid, name)) return RowMatch::kFails;
  }
  if (row.groupOn) {
    const auto* name = NeedsName(row.group.rule) ? &names.GroupName(a.gid) : nullptr;
    if (!AccountHolds(row.group, a.gid, name)) return RowMatch::kFails;
  }
  return RowMatch::kMatches;
}

}  // namespace marigold
