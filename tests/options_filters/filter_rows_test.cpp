#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "model/document_model.h"
#include "options/filter_rows.h"

namespace marigold {
namespace {

PlistDict Row(std::initializer_list<PlistDict::Item> changes) {
  PlistDict row = DefaultFilterRow();
  for (const auto& [key, value] : changes) row.Set(key, value);
  return row;
}

struct RowCase {
  const char* name;
  PlistDict row;
  std::optional<std::string> want;
};

class FilterRowChecks : public ::testing::TestWithParam<RowCase> {};

TEST_P(FilterRowChecks, FirstFailureOrNothing) { EXPECT_EQ(SetFilterRow(GetParam().row), GetParam().want); }

const std::string kYear = "Please insert a valid Year number.";
const std::string kMonth = "Please insert a valid Month number.";
const std::string kDay = "Please insert a valid Day number.";

INSTANTIATE_TEST_SUITE_P(
    Rows, FilterRowChecks,
    ::testing::Values(
        RowCase{"NoCriterion", Row({}), "Please define a criteria for this filter."},
        RowCase{"EmptyName", Row({{"filterFileNameOn", 1}}), "Please insert a valid file name."},
        RowCase{"NameAndKind", Row({{"filterFileNameOn", 1}, {"filterFileNameField", ".tmp"}, {"filterKindOn", 1}}),
                std::nullopt},
        RowCase{"KindAlone", Row({{"filterKindOn", 1}}), std::nullopt},
        // The default date, 1 January 2011, is valid as it stands.
        RowCase{"DefaultDate", Row({{"filterCreationDateOn", 1}}), std::nullopt},
        RowCase{"Year1903", Row({{"filterCreationDateOn", 1}, {"filterCreationDateYear", 1903}}), kYear},
        RowCase{"YearTextEmpty", Row({{"filterModificationDateOn", 1}, {"filterModificationDateYear", ""}}), kYear},
        RowCase{"Month13", Row({{"filterCreationDateOn", 1}, {"filterCreationDateMonth", 13}}), kMonth},
        RowCase{"MonthMissing", [] {
                  PlistDict r = Row({{"filterModificationDateOn", 1}});
                  r.Remove("filterModificationDateMonth");
                  return r;
                }(), kMonth},
        RowCase{"April31", Row({{"filterCreationDateOn", 1}, {"filterCreationDateMonth", 4}, {"filterCreationDateDay", 31}}),
                kDay},
        RowCase{"Feb29In2024", Row({{"filterCreationDateOn", 1}, {"filterCreationDateMonth", 2},
                                    {"filterCreationDateDay", 29}, {"filterCreationDateYear", 2024}}),
                std::nullopt},
        RowCase{"Feb29In2023", Row({{"filterCreationDateOn", 1}, {"filterCreationDateMonth", 2},
                                    {"filterCreationDateDay", 29}, {"filterCreationDateYear", 2023}}),
                kDay},
        // Every year divisible by 4 counts as a leap year, 1900 included.
        RowCase{"Feb29In2100", Row({{"filterModificationDateOn", 1}, {"filterModificationDateMonth", 2},
                                    {"filterModificationDateDay", 29}, {"filterModificationDateYear", 2100}}),
                std::nullopt},
        RowCase{"Day0", Row({{"filterModificationDateOn", 1}, {"filterModificationDateDay", 0}}), kDay},
        // Creation is checked before modification, and the name before both.
        RowCase{"NameBeforeDates", Row({{"filterFileNameOn", 1}, {"filterCreationDateOn", 1},
                                        {"filterCreationDateYear", 12}}),
                "Please insert a valid file name."},
        RowCase{"CreationBeforeModification",
                Row({{"filterCreationDateOn", 1}, {"filterCreationDateDay", 40}, {"filterModificationDateOn", 1},
                     {"filterModificationDateYear", 3}}),
                kDay},
        RowCase{"NegativeSize", Row({{"filterFileSizeOn", 1}, {"filterFileSizeField", -1}}),
                "Please insert a valid File Size."},
        RowCase{"SizeNotANumber", Row({{"filterFileSizeOn", 1}, {"filterFileSizeField", "12 kb"}}),
                "Please insert a valid File Size."},
        RowCase{"SizeTextNumber", Row({{"filterFileSizeOn", 1}, {"filterFileSizeField", " 1.5 "}}), std::nullopt},
        RowCase{"EmptyCreator", Row({{"filterCreatorOn", 1}, {"filterTypeOn", 1}, {"filterTypeField", "TEXT"}}),
                "Please insert a valid Creator."},
        RowCase{"EmptyGroup", Row({{"filterGroupOn", 1}, {"filterOwnerOn", 1}, {"filterOwnerField", "0"}}),
                "Please insert a valid Group name or ID."},
        // A box is on only when it holds 1: a 2 neither checks nor counts.
        RowCase{"BoxNotOne", Row({{"filterTypeOn", 2}}), "Please define a criteria for this filter."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold
