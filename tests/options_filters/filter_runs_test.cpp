// Whole runs with the session's filters and exclusions: what is left out never reaches the
// destination, and an excluded or filtered folder is not walked.
#include <gtest/gtest.h>

#include "support/run_harness.h"
#include "options/filters.h"
#include "model/document_model.h"

namespace marigold::run_test {
namespace {

void UseFilters(PlistDict& document, const PlistDict& row, int copySkip, const std::vector<std::string>& excluded) {
  PlistDict& session = *GetSessionDict(document, 0);
  PlistDict& filters = *session.GetDict("filterDict");
  filters.Set("filterOn", 1);
  filters.Set("filterCopySkip", copySkip);
  filters.GetArray("filterArray")->at(0) = row;
  PlistDict& exclusions = *session.GetDict("excludeDict");
  exclusions.Set("excludeOn", excluded.empty() ? 0 : 1);
  for (std::size_t i = 0; i < excluded.size(); ++i) {
    exclusions.GetArray("excludeArray")->at(i).AsDict()->Set("itemToExclude", excluded[i]);
  }
}

PlistDict NameContains(const std::string& text) {
  PlistDict row = DefaultFilterRow();
  row.Set("filterFileNameOn", 1);
  row.Set("filterFileNameField", text);
  return row;
}

const trees::Tree kSource{{"keep.txt", "k"}, {"Skip.TMP", "s"},        {"Private/", ""}, {"Private/inner.txt", "i"},
                          {"sub/", ""},      {"sub/deep.tmp", "d"},    {"sub/deep.txt", "t"}};

// Copy/skip 2 leaves matches out; 1 keeps only them, and a folder that does not match ("sub") is
// never walked, so its .tmp file is not reached. The exclusion names its folder in other letters.
TEST(FilterRuns, LeftOutItemsAndExcludedFoldersStayBehind) {
  const struct { int copySkip; trees::Tree want; } cases[] = {
      {2, {{"keep.txt", "k"}, {"sub/", ""}, {"sub/deep.txt", "t"}}},
      {1, {{"Skip.TMP", "s"}}},
  };
  for (const auto& c : cases) {
    RunHarness h;
    trees::Build(h.A(), kSource);
    h.document = MakeDocument({{h.A(), h.B(), 2}});
    UseFilters(h.document, NameContains(".tmp"), c.copySkip, {h.A("PRIVATE")});
    SessionFilters filters;
    h.services.filters = &filters;
    h.Run();
    EXPECT_EQ(trees::Read(h.B()), c.want) << c.copySkip;
    const PlistDict& log = *h.driver().state().logSessionArray.at(0).AsDict();
    EXPECT_TRUE(log.Contains("executiveFilterArray"));
    EXPECT_EQ(*log.GetArray("executiveExcludeArray"), (PlistArray{h.A("PRIVATE")}));
  }
}

}  // namespace
}  // namespace marigold::run_test
