// Filters and exclusions on real files: names, days in a fixed time zone, kinds, sizes, owners
// and groups, how rows combine, and the copy/skip switch.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "model/document_model.h"
#include "options/filters.h"
#include "platform/linux_file_system.h"
#include "support/scoped_time_zone.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

// Unix seconds of a local time in Paris (one hour ahead in winter, two in summer; clocks go
// forward on 31 March 2024, so that day has 23 hours).
std::int64_t Paris(int year, int month, int day, int hour, int minute) {
  std::tm parts{};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_isdst = -1;
  return std::mktime(&parts);
}

PlistDict Row(std::initializer_list<PlistDict::Item> changes) {
  PlistDict row = DefaultFilterRow();
  for (const auto& [key, value] : changes) row.Set(key, value);
  return row;
}

PlistDict Session(const std::vector<PlistDict>& rows, int copySkip = 2) {
  PlistArray array(rows.begin(), rows.end());
  return PlistDict{{"filterDict", PlistDict{{"filterOn", 1}, {"filterCopySkip", copySkip}, {"filterArray", array}}}};
}

class Filters : public ::testing::Test {
 protected:
  testing::ScopedTimeZone zone{"Europe/Paris"};

  std::string File(const std::string& name, std::size_t size = 0, std::int64_t modified = 0) {
    const std::string path = temp.WriteFile(name, std::string(size, 'x'));
    if (modified != 0) {
      const timespec times[2] = {{modified, 0}, {modified, 0}};
      EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }
    return path;
  }
  ItemAttributes Attributes(const std::string& path) { return fs.GetAttributes(path).Value(); }

  // Whether `path` is left out under `session`, evaluated as the scan does.
  bool OutOf(const PlistDict& session, const std::string& path, PlistDate now = Now()) {
    SessionFilters filters;
    filters.SessionStarts(session, now);
    return filters.IsToBeFiltered(path, Attributes(path));
  }
  bool Out(const PlistDict& row, const std::string& path) { return OutOf(Session({row}), path); }

  TempFolder temp;
  LinuxFileSystem fs;
};

TEST_F(Filters, NameOperatorsIgnoreCase) {
  const std::string report = File("Report.TMP");
  const std::string etude = File("ÉTUDE.txt");
  struct Case {
    int op;
    const char* text;
    bool report;
  };
  const Case cases[] = {
      {0, ".tmp", true},        {0, "xyz", false},       {1, "rep", true},        {1, "port", false},
      {1, "report.tmp.long", false}, {2, "T.tmp", true}, {2, "report", false},    {3, "report.tmp", true},
      {3, "report", false},     {4, "report.tmp", false}, {4, "other", true},     {5, ".tmp", false},
      {5, "xyz", true},         {6, "report.tmp", false}, {-1, "report.tmp", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Out(Row({{"filterFileNameOn", 1}, {"filterFileNamePop", c.op}, {"filterFileNameField", c.text}}), report),
              c.report)
        << "operator " << c.op << " text " << c.text;
  }
  EXPECT_TRUE(Out(Row({{"filterFileNameOn", 1}, {"filterFileNamePop", 1}, {"filterFileNameField", "étu"}}), etude));
}

TEST_F(Filters, ModificationDayInLocalTime) {
  // 23:30 on 5 March in Paris is 22:30 UTC: still the 5th here.
  const std::string late = File("late", 0, Paris(2024, 3, 5, 23, 30));
  const std::string midnight = File("midnight", 0, Paris(2024, 3, 6, 0, 0));
  const std::string shortDay = File("short", 0, Paris(2024, 3, 31, 23, 30));
  const std::string afterShortDay = File("after", 0, Paris(2024, 4, 1, 0, 10));
  auto row = [](int op, int year, int month, int day) {
    return Row({{"filterModificationDateOn", 1}, {"filterModificationDatePop", op}, {"filterModificationDateYear", year},
                {"filterModificationDateMonth", month}, {"filterModificationDateDay", day}});
  };
  EXPECT_TRUE(Out(row(0, 2024, 3, 5), late));
  EXPECT_FALSE(Out(row(0, 2024, 3, 5), midnight));
  EXPECT_TRUE(Out(row(1, 2024, 3, 6), late));
  EXPECT_FALSE(Out(row(1, 2024, 3, 6), midnight));
  EXPECT_TRUE(Out(row(2, 2024, 3, 5), midnight));
  EXPECT_FALSE(Out(row(2, 2024, 3, 5), late));
  EXPECT_TRUE(Out(row(3, 2024, 3, 6), late));
  EXPECT_FALSE(Out(row(3, 2024, 3, 6), midnight));
  EXPECT_TRUE(Out(row(0, 2024, 3, 31), shortDay));
  EXPECT_TRUE(Out(row(2, 2024, 3, 31), afterShortDay));
  // Operator 4 is the menu's separator and never holds; nor does an unknown operator.
  for (int op : {4, 7}) {
    EXPECT_FALSE(Out(row(op, 2024, 3, 5), late));
    EXPECT_FALSE(Out(row(op, 2024, 3, 6), midnight));
  }

  // Today and yesterday are the days of the moment the session starts.
  const PlistDate now = DateFromUnixSeconds(static_cast<double>(Paris(2024, 3, 6, 10, 0)));
  EXPECT_TRUE(OutOf(Session({row(5, 2011, 1, 1)}), midnight, now));
  EXPECT_FALSE(OutOf(Session({row(5, 2011, 1, 1)}), late, now));
  EXPECT_TRUE(OutOf(Session({row(6, 2011, 1, 1)}), late, now));
  EXPECT_FALSE(OutOf(Session({row(6, 2011, 1, 1)}), midnight, now));
}

TEST_F(Filters, CreationDayAndTheEarlyEndWithoutOne) {
  const std::string path = File("new.txt");
  ItemAttributes attributes = Attributes(path);
  if (!attributes.creationTime) GTEST_SKIP() << "this file system keeps no creation date";
  const PlistDict today = Row({{"filterCreationDateOn", 1}, {"filterCreationDatePop", 5}});
  const PlistDict yesterday = Row({{"filterCreationDateOn", 1}, {"filterCreationDatePop", 6}});
  EXPECT_TRUE(Out(today, path));
  EXPECT_FALSE(Out(yesterday, path));

  // Without a creation date, the first row that tests it ends everything as if no row matched,
  // though the next row would match the name.
  attributes.creationTime.reset();
  const PlistDict byName = Row({{"filterFileNameOn", 1}, {"filterFileNameField", "new"}});
  for (int copySkip : {1, 2}) {
    SessionFilters filters;
    filters.SessionStarts(Session({today, byName}, copySkip));
    EXPECT_EQ(filters.IsToBeFiltered(path, attributes), copySkip == 1);
    // A row that fails on its name first never reaches the creation date.
    PlistDict nameFirst = today;
    nameFirst.Set("filterFileNameOn", 1);
    nameFirst.Set("filterFileNameField", "other");
    filters.SessionStarts(Session({nameFirst, byName}, copySkip));
    EXPECT_EQ(filters.IsToBeFiltered(path, attributes), copySkip != 1);
  }
}

TEST_F(Filters, KindsOfItems) {
  const std::string file = File("f");
  ASSERT_EQ(::mkdir(temp.Join("folder").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(temp.Join("Tool.app").c_str(), 0755), 0);
  ASSERT_EQ(::symlink("f", temp.Join("link").c_str()), 0);
  struct Case {
    int op;
    bool file, folder, package, link;
  };
  const Case cases[] = {
      {0, true, false, true, true},     // not a folder: files, packages, links
      {1, false, true, false, false},   // a folder
      {2, false, false, false, false},  // aliases do not exist here
      {3, false, false, false, true},   // a symbolic link
      {9, false, false, false, false},
  };
  for (const Case& c : cases) {
    const PlistDict row = Row({{"filterKindOn", 1}, {"filterKindPop", c.op}});
    EXPECT_EQ(Out(row, file), c.file) << c.op;
    EXPECT_EQ(Out(row, temp.Join("folder")), c.folder) << c.op;
    EXPECT_EQ(Out(row, temp.Join("Tool.app")), c.package) << c.op;
    EXPECT_EQ(Out(row, temp.Join("link")), c.link) << c.op;
  }
}

TEST_F(Filters, SizesWithUnits) {
  const std::string file = File("two-k", 2048);
  auto row = [](int op, PlistValue value, int unit) {
    return Row({{"filterFileSizeOn", 1}, {"filterFileSizePop", op}, {"filterFileSizeField", value},
                {"filterFileSizeBytesPop", unit}});
  };
  EXPECT_TRUE(Out(row(0, 2, 1), file));
  EXPECT_TRUE(Out(row(0, 2048, 0), file));
  EXPECT_FALSE(Out(row(0, 2047, 0), file));
  EXPECT_TRUE(Out(row(1, 3, 1), file));
  EXPECT_FALSE(Out(row(1, 2, 1), file));
  EXPECT_TRUE(Out(row(2, 1.5, 1), file));
  EXPECT_FALSE(Out(row(2, 1, 2), file));
  EXPECT_TRUE(Out(row(1, 1, 6), file));  // an exbibyte: every file is smaller
  EXPECT_FALSE(Out(row(3, 2, 1), file));
}

TEST_F(Filters, TypeAndCreatorCodesAreEmptyHere) {
  const std::string file = File("doc");
  for (const char* on : {"filterTypeOn", "filterCreatorOn"}) {
    const std::string field = std::string(on) == "filterTypeOn" ? "filterTypeField" : "filterCreatorField";
    const std::string pop = std::string(on) == "filterTypeOn" ? "filterTypePop" : "filterCreatorPop";
    EXPECT_FALSE(Out(Row({{on, 1}, {pop, 0}, {field, "TEXT"}}), file));
    EXPECT_TRUE(Out(Row({{on, 1}, {pop, 1}, {field, "TEXT"}}), file));
    EXPECT_FALSE(Out(Row({{on, 1}, {pop, 2}, {field, "TEXT"}}), file));
  }
}

// A throwaway account, removed when the test ends.
class ThrowawayAccount {
 public:
  explicit ThrowawayAccount(std::string name) : mName(std::move(name)) {
    mCreated = std::system(("useradd -M -U " + mName + " 2>/dev/null").c_str()) == 0;
  }
  ~ThrowawayAccount() {
    if (mCreated) std::system(("userdel " + mName + " 2>/dev/null; groupdel " + mName + " 2>/dev/null").c_str());
  }
  bool created() const { return mCreated; }
  const std::string& name() const { return mName; }

 private:
  std::string mName;
  bool mCreated = false;
};

TEST_F(Filters, OwnersAndGroupsByNameAndId) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to create an account and give files away";
  ThrowawayAccount account("mgfilt" + std::to_string(::getpid() % 100000));
  if (!account.created()) GTEST_SKIP() << "useradd is not available";
  const std::string owned = File("owned");
  const std::string orphan = File("orphan");
  ASSERT_EQ(std::system(("chown " + account.name() + ":" + account.name() + " '" + owned + "'").c_str()), 0);
  ASSERT_EQ(::chown(orphan.c_str(), 54321, 54322), 0);
  const ItemAttributes ownedAttributes = Attributes(owned);
  ASSERT_NE(ownedAttributes.uid, 0u);

  for (const std::string which : {"filterOwner", "filterGroup"}) {
    SCOPED_TRACE(which);
    const std::uint32_t id = which == "filterOwner" ? ownedAttributes.uid : ownedAttributes.gid;
    auto out = [&](int op, const std::string& text, const std::string& path) {
      return Out(Row({{which + "On", 1}, {which + "Pop", op}, {which + "Field", text}}), path);
    };
    EXPECT_TRUE(out(0, account.name(), owned));
    EXPECT_FALSE(out(0, "MGFILT", owned));  // names are compared as they are
    EXPECT_FALSE(out(1, account.name(), owned));
    EXPECT_TRUE(out(1, "root", owned));
    EXPECT_TRUE(out(2, std::to_string(id), owned));
    EXPECT_TRUE(out(2, " " + std::to_string(id) + "abc", owned));  // read as a field's integer
    EXPECT_FALSE(out(3, std::to_string(id), owned));
    EXPECT_FALSE(out(4, std::to_string(id), owned));
    // An id without an account has no name: it never equals a text and always differs from one.
    EXPECT_FALSE(out(0, "54321", orphan));
    EXPECT_TRUE(out(1, "54321", orphan));
    EXPECT_TRUE(out(3, "1", orphan));
  }
}

TEST_F(Filters, RowsCombineAndTheSwitchDecides) {
  const std::string bigTmp = File("big.tmp", 5000);
  const std::string smallTmp = File("small.tmp", 10);
  const std::string bigDoc = File("big.doc", 5000);
  const PlistDict tmpAndBig = Row({{"filterFileNameOn", 1}, {"filterFileNameField", ".TMP"}, {"filterFileSizeOn", 1},
                                   {"filterFileSizePop", 2}, {"filterFileSizeField", 1}, {"filterFileSizeBytesPop", 1}});
  // One row: both criteria must hold.
  EXPECT_TRUE(OutOf(Session({tmpAndBig}), bigTmp));
  EXPECT_FALSE(OutOf(Session({tmpAndBig}), smallTmp));
  EXPECT_FALSE(OutOf(Session({tmpAndBig}), bigDoc));
  // Two rows: either may match.
  const PlistDict doc = Row({{"filterFileNameOn", 1}, {"filterFileNamePop", 2}, {"filterFileNameField", ".doc"}});
  EXPECT_TRUE(OutOf(Session({tmpAndBig, doc}), bigDoc));
  EXPECT_FALSE(OutOf(Session({tmpAndBig, doc}), smallTmp));
  // Copy/skip 1 keeps only what matches.
  EXPECT_FALSE(OutOf(Session({tmpAndBig, doc}, 1), bigDoc));
  EXPECT_TRUE(OutOf(Session({tmpAndBig, doc}, 1), smallTmp));
  // Rows that are off, or have no criterion on, are not rows: nothing is filtered, whatever the switch.
  PlistDict off = doc;
  off.Set("onOff", 0);
  for (int copySkip : {1, 2}) {
    EXPECT_FALSE(OutOf(Session({off, Row({})}, copySkip), bigDoc));
    SessionFilters filters;
    filters.SessionStarts(Session({off, Row({}), doc}, copySkip));
    EXPECT_EQ(filters.CountFilterValid(), 1u);
  }
}

TEST(Exclusions, WholePathsIgnoringCase) {
  const PlistDict session{{"excludeDict",
                           PlistDict{{"excludeOn", 1},
                                     {"excludeArray", PlistArray{PlistDict{{"onOff", 1}, {"itemToExclude", "/Users/a/Docs"}},
                                                                 PlistDict{{"onOff", 1}, {"itemToExclude", "/Données/ÉTÉ"}},
                                                                 PlistDict{{"onOff", 0}, {"itemToExclude", "/off"}},
                                                                 PlistDict{{"onOff", 1}, {"itemToExclude", "/Bad\xff" "Name"}},
                                                                 PlistDict{{"onOff", 1}, {"itemToExclude", ""}}}}}}};
  SessionFilters filters;
  filters.SessionStarts(session);
  EXPECT_EQ(filters.CountExcludeValid(), 3u);
  EXPECT_TRUE(filters.IsToBeExcluded("/Users/a/Docs"));
  EXPECT_TRUE(filters.IsToBeExcluded("/users/a/docs"));
  EXPECT_FALSE(filters.IsToBeExcluded("/Users/a/Docs/x"));
  EXPECT_FALSE(filters.IsToBeExcluded("/Users/a"));
  EXPECT_TRUE(filters.IsToBeExcluded("/données/été"));
  EXPECT_FALSE(filters.IsToBeExcluded("/off"));
  EXPECT_FALSE(filters.IsToBeExcluded(""));
  // Bytes that are not text only match themselves; the text around them still ignores case.
  EXPECT_FALSE(filters.IsToBeExcluded("/Users/a/Docs\xff"));
  EXPECT_TRUE(filters.IsToBeExcluded("/bad\xff" "name"));
  EXPECT_FALSE(filters.IsToBeExcluded("/bad\xfe" "name"));
}

TEST(FilterCounts, OutsideTheSessionListIsZero) {
  PlistDict document;
  AddSession(1, "s", document);
  GetSessionDict(document, 0)->GetDict("filterDict")->GetArray("filterArray")->at(3).AsDict()->Set("filterKindOn", 1);
  GetSessionDict(document, 0)->GetDict("excludeDict")->GetArray("excludeArray")->at(0).AsDict()->Set("itemToExclude", "/x");
  EXPECT_EQ(CountFilterValid(document, 0), 1);
  EXPECT_EQ(CountExcludeValid(document, 0), 1);
  for (std::int64_t index : {-1, 1, 2}) {
    EXPECT_EQ(CountFilterValid(document, index), 0);
    EXPECT_EQ(CountExcludeValid(document, index), 0);
  }
}

}  // namespace
}  // namespace marigold
