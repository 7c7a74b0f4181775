// Whole exact synchronisations on real trees with a real index: the first run, deletions carried
// across on the next, swapped folders, a pair losing its index to another task kind, the
// deletion conflicts under each rule, Stop, and damaged index files.
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <filesystem>

#include "model/document_model.h"
#include "engine/exact_index_console.h"
#include "index_test_support.h"
#include "util/plist_io.h"

namespace marigold::index_test {
namespace {

namespace fs = std::filesystem;

bool Exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

const PlistArray& Entries(const std::string& mainIndex, PlistDict& holder) {
  holder = ReadPlistDictFile(mainIndex).value_or(PlistDict());
  static const PlistArray kNone;
  const PlistArray* entries = holder.GetArray("indexFilesList");
  return entries ? *entries : kNone;
}

TEST(ExactIndexRun, FirstRunCopiesEverythingAndRecordsBothSides) {
  IndexHarness h;
  trees::Build(h.A(), {{"a.txt", "alpha"}, {"docs/", ""}, {"docs/b.txt", "beta"}, {"Tool.app/", ""},
                       {"Tool.app/bin", "x"}});
  trees::Build(h.B(), {{"only-b.txt", "bee"}});

  h.Run();

  EXPECT_EQ(trees::Read(h.A()), trees::Read(h.B()));
  PlistDict main;
  const PlistArray& entries = Entries(h.MainIndex(), main);
  EXPECT_EQ(main.GetInt("fileVersion"), 320);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(*entries[0].AsDict(), (PlistDict{{"absolutePathSource", h.A()},
                                             {"absolutePathDest", h.B()},
                                             {"indexFileName", "MG3ExactSyncIndex.plist"}}));
  // The general parser reads what the streamed writer wrote, with the recorded shape.
  std::optional<PlistDict> pair = ReadPlistDictFile(h.PairIndex());
  ASSERT_TRUE(pair);
  EXPECT_EQ(pair->GetInt("fileVersion"), 320);
  EXPECT_EQ(pair->GetString("absolutePathSource"), h.A());
  const PlistDict* treeSource = pair->GetDict("treeSource");
  ASSERT_NE(treeSource, nullptr);
  const PlistDict* root = treeSource->GetDict("A");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->GetString("a.txt", "?"), "");
  EXPECT_EQ(root->GetString("Tool.app", "?"), "") << "a package is a leaf";
  ASSERT_NE(root->GetDict("docs"), nullptr);
  EXPECT_TRUE(root->GetDict("docs")->Contains("b.txt"));
  EXPECT_TRUE(pair->GetDict("treeDest")->GetDict("B")->Contains("only-b.txt"));
  ASSERT_TRUE(pair->GetDate("lastExactSyncDate"));
  // XML dates keep whole seconds.
  EXPECT_EQ(pair->GetDate("lastExactSyncDate")->seconds, std::floor(h.state().gStartSyncDateTime.seconds));

  // Leaves carry the run's start as their backup date; folders do not get one from the index.
  EXPECT_EQ(trees::BackupDate(h.B("docs/b.txt")), h.state().gStartSyncDateTimeUTC);
  EXPECT_EQ(trees::BackupDate(h.A("only-b.txt")), h.state().gStartSyncDateTimeUTC);
  EXPECT_EQ(h.proxy.indeterminate, 1);
  EXPECT_NE(std::find(h.proxy.comments.begin(), h.proxy.comments.end(), "Creating Exact Sync Index\xE2\x80\xA6"),
            h.proxy.comments.end());
}

TEST(ExactIndexRun, DeletionsOnEitherSideAreCarriedAcross) {
  IndexHarness h;
  trees::Build(h.A(), {{"keep.txt", "k"}, {"gone-from-a.txt", "1"}, {"gone-from-b.txt", "2"}, {"dir/", ""},
                       {"dir/inner.txt", "i"}});
  h.Run();
  ASSERT_TRUE(Exists(h.PairIndex()));

  ASSERT_EQ(::unlink(h.A("gone-from-a.txt").c_str()), 0);
  ASSERT_EQ(::unlink(h.B("gone-from-b.txt").c_str()), 0);
  fs::remove_all(h.B("dir"));
  trees::Build(h.A(), {{"new-on-a.txt", "n"}});
  h.Run();

  const trees::Tree expected{{"keep.txt", "k"}, {"new-on-a.txt", "n"}};
  EXPECT_EQ(trees::Read(h.A()), expected);
  EXPECT_EQ(trees::Read(h.B()), expected);
  EXPECT_EQ(h.state().gGlobalError, 0);
}

TEST(ExactIndexRun, NamesThatAreNotTextAreIndexedWithoutLoss) {
  IndexHarness h;
  const trees::Tree odd{{"caf\xE9.txt", "latin-1"}, {"tab\tname", "t"}, {"bell\x07\r", "b"}, {"R&D <x>/", ""}, {"R&D <x>/\xFF", "ff"},
                        {"100%", "p"}};
  trees::Build(h.A(), odd);
  h.Run();
  ASSERT_TRUE(ReadPlistDictFile(h.PairIndex())) << "the index stays a valid property list";
  // Any XML reader must take it: UTF-8 throughout, no control characters but the layout's own.
  const std::string text = h.temp.ReadFile(h.PairIndex());
  EXPECT_TRUE(g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr));
  EXPECT_TRUE(std::none_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
  }));

  for (const auto& [name, content] : odd) {
    if (name.back() == '/') continue;
    ASSERT_EQ(::unlink(h.B(name).c_str()), 0) << name;
  }
  h.Run();
  EXPECT_EQ(trees::Read(h.A()), (trees::Tree{{"R&D <x>/", ""}})) << "each deletion was carried across";
}

TEST(ExactIndexRun, SwappedFoldersWithEqualRootNamesKeepTheirIndex) {
  IndexHarness h;
  h.SetFolders(h.temp.Join("left/Data"), h.temp.Join("right/Data"));
  trees::Build(h.A(), {{"x.txt", "x"}, {"y.txt", "y"}});
  h.Run();
  const std::string left = h.A(), right = h.B();

  h.SetFolders(right, left);
  ASSERT_EQ(::unlink((left + "/x.txt").c_str()), 0);
  h.Run();

  EXPECT_EQ(trees::Read(right), (trees::Tree{{"y.txt", "y"}})) << "the deletion was carried across";
  PlistDict main;
  const PlistArray& entries = Entries(h.MainIndex(), main);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].AsDict()->GetString("absolutePathSource"), left) << "the entry keeps its first orientation";
  std::optional<PlistDict> pair = ReadPlistDictFile(h.PairIndex());
  ASSERT_TRUE(pair);
  EXPECT_EQ(pair->GetString("absolutePathSource"), right) << "the file is rewritten in the new orientation";
}

TEST(ExactIndexRun, SwappedFoldersWithDifferentRootNamesStartAfresh) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  h.Run();

  h.SetFolders(h.B(), h.A());
  ASSERT_EQ(::unlink(h.B("x.txt").c_str()), 0);  // the new destination, the old source
  h.Run();

  EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"x.txt", "x"}})) << "without an index nothing counts as deleted";
}

TEST(ExactIndexRun, AnotherTaskKindRemovesThePairsIndex) {
  for (Task other : {kSync, kBackup, kExactBackup}) {
    SCOPED_TRACE(other);
    IndexHarness h;
    trees::Build(h.A(), {{"x.txt", "x"}});
    h.Run();
    ASSERT_TRUE(Exists(h.PairIndex()));

    h.SetTask(other);
    h.Run();
    EXPECT_FALSE(Exists(h.PairIndex()));
    PlistDict main;
    EXPECT_TRUE(Entries(h.MainIndex(), main).empty());

    // The next exact synchronisation is a first one: a file gone from A comes back from B.
    h.SetTask(kExactSync);
    ASSERT_EQ(::unlink(h.A("x.txt").c_str()), 0);
    h.Run();
    EXPECT_EQ(trees::Read(h.A()), (trees::Tree{{"x.txt", "x"}}));
  }
}

// --- deletion conflicts ----------------------------------------------------------------------

struct ConflictCase {
  const char* name;
  int kind;        // 41: changed after deletion on the other side; 42: added in a deleted folder
  int radio, ask;  // conflictExactSyncRadio (2 = delete), conflictExactSyncAsk (1 = ask)
  int executedBy;
  int answer;      // the replace prompt's answer, when asked
  bool deleted;    // the destination's file was deleted (else copied back)
};

class ExactConflicts : public ::testing::TestWithParam<ConflictCase> {};

TEST_P(ExactConflicts, DecideByTheRule) {
  const ConflictCase& c = GetParam();
  IndexHarness h;
  h.SetExactSyncRules(c.radio, c.ask);
  trees::Build(h.A(), {{"f.txt", "old"}, {"dir/", ""}, {"dir/old.txt", "o"}});
  h.Run();

  std::string file;
  if (c.kind == 41) {
    ASSERT_EQ(::unlink(h.A("f.txt").c_str()), 0);
    file = "f.txt";
    trees::Write(h.B(file), "changed");
  } else {
    fs::remove_all(h.A("dir"));
    file = "dir/new.txt";
    trees::Write(h.B(file), "new");
  }
  // Changed after the last run, whatever the clock's resolution.
  trees::SetModified(h.B(file), h.state().gStartSyncDateTimeUTC + 100);
  h.proxy.replaceAnswers = {c.answer};
  h.Run(c.executedBy);

  const bool asked = c.ask == 1 && c.executedBy == kExecutedByUser;
  EXPECT_EQ(h.proxy.Conflicts(), asked ? std::vector<int>{c.kind} : std::vector<int>{});
  EXPECT_EQ(Exists(h.B(file)), !c.deleted);
  EXPECT_EQ(Exists(h.A(file)), !c.deleted) << "a refused deletion copies the file back";
  EXPECT_EQ(h.state().gGlobalConflictsSkipped, c.deleted ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ExactConflicts,
    ::testing::Values(
        ConflictCase{"ChangedDeleteByRule", 41, 2, 0, kExecutedByUser, 0, true},
        ConflictCase{"ChangedKeepByRule", 41, 1, 0, kExecutedByUser, 0, false},
        ConflictCase{"ChangedAskedDelete", 41, 1, 1, kExecutedByUser, kReplaceResultReplace, true},
        ConflictCase{"ChangedAskedCopy", 41, 2, 1, kExecutedByUser, kReplaceResultSkip, false},
        ConflictCase{"ChangedUnattendedSkips", 41, 2, 1, kExecutedByTimer, 0, false},
        ConflictCase{"AddedDeleteByRule", 42, 2, 0, kExecutedByUser, 0, true},
        ConflictCase{"AddedKeepByRule", 42, 1, 0, kExecutedByUser, 0, false},
        ConflictCase{"AddedAskedDelete", 42, 1, 1, kExecutedByUser, kReplaceResultReplace, true},
        ConflictCase{"AddedAskedCopy", 42, 2, 1, kExecutedByUser, kReplaceResultSkip, false},
        ConflictCase{"AddedUnattendedSkips", 42, 2, 1, kExecutedByTimer, 0, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ExactIndexRun, StopWritesNoIndexAndNoRootDate) {
  IndexHarness h;
  h.SetExactSyncRules(2, 1);
  trees::Build(h.A(), {{"f.txt", "old"}, {"g.txt", "g"}});
  h.Run();
  const std::string indexBefore = h.temp.ReadFile(h.PairIndex());
  const auto rootDateBefore = trees::BackupDate(h.B());
  ASSERT_TRUE(rootDateBefore);

  ASSERT_EQ(::unlink(h.A("f.txt").c_str()), 0);
  ASSERT_EQ(::unlink(h.A("g.txt").c_str()), 0);
  trees::SetModified(h.B("f.txt"), h.state().gStartSyncDateTimeUTC + 100);
  ::sleep(1);  // the next run starts in a later second, so a rewritten date would show
  h.proxy.replaceAnswers = {kReplaceResultStop};
  h.Run();

  EXPECT_TRUE(h.state().mUserPressedStop);
  EXPECT_EQ(h.temp.ReadFile(h.PairIndex()), indexBefore);
  EXPECT_EQ(trees::BackupDate(h.B()), rootDateBefore);
  EXPECT_EQ(trees::BackupDate(h.A()), rootDateBefore);
}

// --- damaged files ---------------------------------------------------------------------------

struct Damage {
  const char* name;
  bool mainIndex;  // damage the main index, else the pair's file
  const char* content;
};

class DamagedIndex : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedIndex, CountsAsAbsentAndIsRepairedByTheNextWrite) {
  const Damage& d = GetParam();
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}, {"y.txt", "y"}});
  h.Run();
  const std::string target = d.mainIndex ? h.MainIndex() : h.PairIndex();
  std::string content = d.content;
  if (content == "truncated") content = h.temp.ReadFile(target).substr(0, h.temp.ReadFile(target).size() / 2);
  for (auto [mark, path] : {std::pair{std::string("@A"), h.A()}, std::pair{std::string("@B"), h.B()}}) {
    for (std::size_t at = content.find(mark); at != std::string::npos; at = content.find(mark)) content.replace(at, 2, path);
  }
  trees::Write(target, content);

  // Without an index the file gone from A is copied back rather than deleted from B.
  ASSERT_EQ(::unlink(h.A("x.txt").c_str()), 0);
  h.Run();
  EXPECT_EQ(trees::Read(h.A()), (trees::Tree{{"x.txt", "x"}, {"y.txt", "y"}}));
  EXPECT_EQ(h.state().gGlobalError, 0);

  // The write repaired the index: a deletion is carried across again.
  ASSERT_EQ(::unlink(h.A("y.txt").c_str()), 0);
  h.Run();
  EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"x.txt", "x"}}));
}

INSTANTIATE_TEST_SUITE_P(
    Files, DamagedIndex,
    ::testing::Values(
        Damage{"TruncatedPair", false, "truncated"},
        Damage{"GarbagePair", false, "\x01\x02garbage<<<&&"},
        Damage{"PairIsAnArray", false, "<plist version=\"1.0\"><array><string>x</string></array></plist>"},
        Damage{"PairRootIsAString",
               false, "<plist version=\"1.0\"><dict><key>fileVersion</key><integer>320</integer>"
                      "<key>absolutePathSource</key><string>@A</string>"
                      "<key>absolutePathDest</key><string>@B</string>"
                      "<key>treeSource</key><dict><key>A</key><string>oops</string></dict>"
                      "<key>treeDest</key><dict><key>B</key><dict/></dict></dict></plist>"},
        Damage{"NewerPair", false, "<plist version=\"1.0\"><dict><key>fileVersion</key><integer>321</integer></dict></plist>"},
        Damage{"TruncatedMain", true, "truncated"},
        Damage{"MainNewer", true,
               "<plist version=\"1.0\"><dict><key>fileVersion</key><integer>321</integer>"
               "<key>indexFilesList</key><array/></dict></plist>"},
        Damage{"MainWrongTypes", true,
               "<plist version=\"1.0\"><dict><key>fileVersion</key><string>320</string>"
               "<key>indexFilesList</key><string>none</string></dict></plist>"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ExactIndexRun, MainIndexDeletedByHandRecreatesTheFolder) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  h.Run();
  trees::Write(h.PairIndex("MG3ExactSyncIndex 1.plist"), "another pair's");
  ASSERT_EQ(::unlink(h.MainIndex().c_str()), 0);

  h.Run();
  EXPECT_TRUE(Exists(h.MainIndex()));
  EXPECT_TRUE(Exists(h.PairIndex()));
  EXPECT_FALSE(Exists(h.PairIndex("MG3ExactSyncIndex 1.plist"))) << "the whole folder starts over";
}

TEST(ExactIndexRun, TwoPairsGetNumberedFilesAndTheConsoleShowsEachDate) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  h.Run();
  const std::string firstA = h.A(), firstB = h.B();
  h.SetFolders(h.temp.Join("C"), h.temp.Join("D"));
  h.Run();
  EXPECT_TRUE(Exists(h.PairIndex("MG3ExactSyncIndex 1.plist")));

  const PlistDict& session = *GetSessionDict(h.document, 0);
  std::optional<std::string> line = LastExactSyncLine(session, h.IndexFolder());
  ASSERT_TRUE(line);
  EXPECT_EQ(line->rfind("\xE2\x80\xA2 Last Exact Sync: ", 0), 0u) << *line;
  const auto start = static_cast<std::time_t>(h.state().gStartSyncDateTimeUTC);
  std::tm local{};
  ::localtime_r(&start, &local);
  char expected[64];
  std::strftime(expected, sizeof expected, "%b %d %Y, %H:%M:%S", &local);
  EXPECT_NE(line->find(expected), std::string::npos) << *line;

  EXPECT_TRUE(LastExactSyncLine(firstB, firstA, h.IndexFolder())) << "swapped folders find the same index";
  EXPECT_FALSE(LastExactSyncLine(firstA, h.temp.Join("elsewhere"), h.IndexFolder()));
  h.SetTask(kSync);
  EXPECT_FALSE(LastExactSyncLine(*GetSessionDict(h.document, 0), h.IndexFolder())) << "only exact synchronisations";
}

}  // namespace
}  // namespace marigold::index_test
