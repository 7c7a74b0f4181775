// One filter row made ready for the scan: each criterion's operator and value are read, folded,
// converted to bytes or day bounds once per session, so that an item costs at most one
// comparison or one cached lookup per criterion. Criteria are tested in the order name,
// creation date, modification date, type, creator, kind, size, owner, group; the first that
// fails ends the row.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "options/filters_account_names.h"
#include "options/filters_days.h"
#include "platform/item_attributes.h"
#include "util/plist_value.h"

namespace marigold {

enum class NameRule { kContains, kBegins, kEnds, kEquals, kDiffers, kLacks, kNever };
enum class DayRule { kOn, kBefore, kAfter, kNotOn, kNever };
enum class SizeRule { kEqual, kSmaller, kLarger, kNever };
enum class KindRule { kNotFolder, kFolder, kAlias, kSymbolicLink, kNever };
enum class AccountRule { kNameEquals, kNameDiffers, kIdEquals, kIdDiffers, kNever };

struct DayTest {
  DayRule rule = DayRule::kNever;
  LocalDay day;
};

struct AccountTest {
  AccountRule rule = AccountRule::kNever;
  std::string name;     // the row's text
  std::int64_t id = 0;  // the row's text read as an integer
};

struct CompiledFilterRow {
  bool nameOn = false, creationOn = false, modificationOn = false, typeOn = false, creatorOn = false,
       kindOn = false, sizeOn = false, ownerOn = false, groupOn = false;
  NameRule nameRule = NameRule::kNever;
  std::string foldedName;
  DayTest creation, modification;
  // Items carry no type or creator code here, so each code test has one answer for every item.
  bool typeHolds = false, creatorHolds = false;
  KindRule kindRule = KindRule::kNever;
  SizeRule sizeRule = SizeRule::kNever;
  long double sizeBytes = 0;  // exact for every 64-bit size
  AccountTest owner, group;
};

// Today's and yesterday's bounds, fixed when the session starts.
struct FilterClock {
  std::optional<LocalDay> today;
  std::optional<LocalDay> yesterday;
  static FilterClock At(PlistDate now);
};

// Reads one active row of filterArray; missing or unreadable values take the new row's defaults,
// and an operator outside its menu makes its criterion never hold.
CompiledFilterRow CompileFilterRow(const PlistDict& row, const FilterClock& clock);

// One item as the filter sees it. The folded name is made on first use and shared by the rows.
class FilterItem {
 public:
  FilterItem(std::string_view path, const ItemAttributes& attributes)
      : mName(LastPathComponent(path)), attributes(attributes) {}
  const std::string& FoldedName();

 private:
  std::string_view mName;
  std::optional<std::string> mFolded;

 public:
  const ItemAttributes& attributes;
};

// Whether every criterion the row enables holds for the item; kNoCreationDate when the row
// reached its creation-date test and the item has no creation date.
enum class RowMatch { kMatches, kFails, kNoCreationDate };
RowMatch MatchFilterRow(const CompiledFilterRow& row, FilterItem& item, AccountNames& names);

}  // namespace marigold
