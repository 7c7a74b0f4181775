// The walk around the decisions: dates, packages, empty folders, survivors of deleted folders,
// counters, errors and the items a scan must leave alone.
#include <gtest/gtest.h>

#include "support/fault_file_system.h"
#include "scan_test_support.h"
#include "support/tree_values.h"

namespace marigold::scantest {
namespace {

// Dates are compared in whole seconds: the fraction neither makes nor hides a difference.
TEST(Scan, FractionsOfASecondDoNotCount) {
  TempTree a{{{"same", "a", T, {}, 999'999'999}, {"later", "a", T + 1}}};
  TempTree b{{{"same", "b", T}, {"later", "b", T, {}, 999'999'999}}};
  ScanHarness h{TaskKind::kSync};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"later", 4}}));
}

TEST(Scan, NewItemsOnlyLeavesPairsOutButWalksFolders) {
  TempTree a{{{"f", "new", T + 10}, {"d/only", "x"}, {"d/both", "x", T + 10}}}, b{{{"f", "old"}, {"d/both", "x"}}};
  ScanHarness h{TaskKind::kSync};
  h.state.session.gIsNewItemsOnly = true;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"d", 1}, {"d/only", 2}}));
  EXPECT_EQ(h.state.scan.gAFilesScanned, 3);  // left out, but still looked at
}

TEST(Scan, PackagesStayWholeUnlessBothSidesHoldThem) {
  TempTree a{{{"One.bundle/x", "1"}, {"Two.bundle/y", "2", T + 5}, {"Tool.app/z", "3", T + 5}, {"Tool.app/", "", T + 5}}};
  TempTree b{{{"Two.bundle/y", "2"}, {"Tool.app/z", "3"}, {"Tool.app/", "", T}}};
  ScanHarness h{TaskKind::kBackup};
  h.state.session.gIsTreatPackagesAsFolders = true;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{
                           {"One.bundle", 2}, {"Tool.app", 4}, {"Two.bundle", 1}, {"Two.bundle/y", 4}}));
  EXPECT_FALSE(h.Node("One.bundle")->hasSubItems);
  EXPECT_EQ(h.state.scan.gAFilesScanned, 3);  // a package that stays whole counts as a file
  EXPECT_EQ(h.state.scan.gAFoldersScanned, 1);
}

TEST(Scan, EmptyFoldersAndTheirDSStoreAreSkippedWhenAsked) {
  TempTree a{{{"empty/"}, {"junk/.DS_Store", "x"}, {"full/doc", "x"}}}, b;
  for (bool skip : {false, true}) {
    ScanHarness h{TaskKind::kBackup};
    h.state.session.gIsSkipEmptyFolders = skip;
    ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
    std::map<std::string, int> want{{"full", 2}, {"full/doc", 2}};
    if (!skip) want.insert({{"empty", 2}, {"junk", 2}, {"junk/.DS_Store", 2}});
    EXPECT_EQ(h.Modes(), want) << "skip " << skip;
    EXPECT_EQ(h.state.gItemsToDo, static_cast<std::int64_t>(want.size())) << "skip " << skip;
    EXPECT_EQ(h.state.tallies.runToCopyAToB, h.state.gItemsToDo);
  }
}

TEST(Scan, FolderPairsWithNothingToDoAreDropped) {
  TempTree a{{{"same/f", "x"}, {"same/deeper/g", "y"}}}, b{{{"same/f", "x"}, {"same/deeper/g", "y"}}};
  ScanHarness h{TaskKind::kSync};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_TRUE(h.Modes().empty());
  EXPECT_EQ(h.state.tallies.runNothing, 0);
}

TEST(Scan, DeletedFolderThatKeepsAnItemIsRecreatedWithItsDSStore) {
  TempTree a{{{"d/.DS_Store", "x"}, {"d/old", "x"}, {"d/new", "x", T + 8, T + 5}}}, b;
  ScanHarness h{TaskKind::kExactSync};
  h.state.session.gIsConflictExactSyncRadio = false;
  for (const char* gone : {"d", "d/.DS_Store", "d/old", "d/new"}) h.services.indexed.insert(b / gone);
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  // The changed file is copied back, so the folder comes back with its ".DS_Store".
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"d", 2}, {"d/.DS_Store", 2}, {"d/new", 2}, {"d/old", 6}}));
  EXPECT_EQ(h.Node("d/old")->ifSkipAddToExactIndex, 0);
  EXPECT_EQ(h.state.tallies.runToCopyAToB, 3);
  EXPECT_EQ(h.state.tallies.runToDelete, 1);
  EXPECT_EQ(h.state.gItemsToDo, 4);
}

TEST(Scan, DeletedFolderWithAnUnseenItemStaysAndDropsItsDSStore) {
  TempTree a{{{"d/.DS_Store", "x"}, {"d/.hidden", "x"}, {"d/old", "x"}}}, b;
  ScanHarness h{TaskKind::kExactSync};
  h.state.session.gIsExcludeOn = true;
  h.services.excluded.insert(a / "d/.hidden");
  for (const char* gone : {"d", "d/.DS_Store", "d/.hidden", "d/old"}) h.services.indexed.insert(b / gone);
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"d", 1}, {"d/old", 6}}));
  EXPECT_EQ(h.state.gItemsToDo, 1);
  EXPECT_EQ(h.state.tallies.runToDelete, 1);
  EXPECT_EQ(h.state.tallies.runNothing, 1);
}

TEST(Scan, CountsEachSideAndRemembersWhatItSaw) {
  TempTree a{{{"d/f", "12345", T + 10}, {"g", "x"}}}, b{{{"d/f", "1"}, {"h", "y"}}};
  ScanHarness h{TaskKind::kSync};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.state.scan.gAFoldersScanned, 1);
  EXPECT_EQ(h.state.scan.gAFilesScanned, 2);
  EXPECT_EQ(h.state.scan.gBFoldersScanned, 1);
  EXPECT_EQ(h.state.scan.gBFilesScanned, 2);
  EXPECT_EQ(h.state.gItemsToDo, 3);
  EXPECT_EQ(h.state.tallies.runToCopyAToB, 2);
  EXPECT_EQ(h.state.tallies.runToCopyBToA, 1);
  EXPECT_EQ(h.state.tallies.runNothing, 1);
  const ScanNode* f = h.Node("d/f");
  EXPECT_EQ(f->snapshotA.size, 5u);
  EXPECT_EQ(f->snapshotA.modificationTime.seconds, T + 10);
  EXPECT_EQ(f->snapshotB.size, 1u);
  EXPECT_FALSE(h.Node("g")->snapshotB.exists);
}

TEST(Scan, ChangesNothingOnDisk) {
  TempTree a{{{"d/f", "x", T + 10, T + 1}, {"e/", ""}}}, b{{{"d/f", "y", T + 8, T + 1}, {"z", "z"}}};
  const auto treeA = trees::Read(a.Path()), treeB = trees::Read(b.Path());
  const auto datesA = trees::Dates(a.Path()), datesB = trees::Dates(b.Path());
  ScanHarness h{TaskKind::kExactSync};
  h.state.session.gIsConflictSyncAsk = true;
  h.state.session.gCheckAttrChanged = true;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(trees::Read(a.Path()), treeA);
  EXPECT_EQ(trees::Read(b.Path()), treeB);
  EXPECT_EQ(trees::Dates(a.Path()), datesA);
  EXPECT_EQ(trees::Dates(b.Path()), datesB);
}

TEST(Scan, BothChangedInExactSyncKeepsTheirBackupDates) {
  TempTree a{{{"x", "a", T + 10, T + 5}}}, b{{{"x", "b", T + 8, T + 5}}};
  ScanHarness h{TaskKind::kExactSync};
  h.state.session.gIsConflictExactSyncRadio = true;
  h.state.session.gIsConflictSyncRadio = false;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.state.restoreBackupDateArray, (std::vector<std::string>{a / "x", b / "x"}));
}

TEST(Scan, ReadsBackupDatesOnlyWhenARuleNeedsThem) {
  TempTree a{{{"x", "a", T + 10}, {"y", "a"}}}, b{{{"x", "b"}}};
  LinuxFileSystem real;
  for (bool radio : {true, false}) {
    FaultFileSystem fs{real};
    ScanHarness h{TaskKind::kSync, &fs};
    h.state.session.gIsConflictSyncRadio = radio;
    ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
    // Two for the roots; the pair's two only when its conflict has to be checked.
    EXPECT_EQ(fs.CountCalls(FsOperation::kGetBackupDate), radio ? 2 : 4);
    // One listing per folder and side carries every item's attributes.
    EXPECT_EQ(fs.CountCalls(FsOperation::kListFolder), 2);
    EXPECT_LE(fs.CountCalls(FsOperation::kGetAttributes), 1);
  }
}

TEST(Scan, RootLevelItemsThatAreNeverCopied) {
  TempTree a{{{"Icon\r", "i"}, {".VolumeIcon.icns", "i"}, {"secret", "s"}, {"dev/null0", "x"}, {"sub/Icon\r", "i"}}};
  TempTree b;
  ScanHarness h{TaskKind::kBackup};
  h.state.bootItemsToDontCopyArray.insert(a / "secret");
  h.state.bootFoldersToCopyEmptyArray.insert(a / "dev");
  h.state.mEuidIsRoot = true;  // root creates those folders without asking about privileges
  h.services.privilegeProblems[a / "dev"] = 1;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"dev", 2}, {"sub", 2}, {"sub/Icon\r", 2}}));
  EXPECT_FALSE(h.Node("dev")->hasSubItems);
  EXPECT_EQ(h.state.gTotError, 0);
}

TEST(Scan, InvisibleItemsAreLeftOutWhenTheSessionSaysSo) {
  TempTree a{{{".hidden", "x"}, {".config/f", "x"}, {"shown", "x"}}}, b;
  for (bool invisibleOn : {true, false}) {
    ScanHarness h{TaskKind::kBackup};
    h.state.session.gIsInvisibleOn = invisibleOn;
    ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
    EXPECT_EQ(h.Modes().size(), invisibleOn ? 4u : 1u);
    EXPECT_EQ(h.state.scan.gAFilesScanned + h.state.scan.gAFoldersScanned, invisibleOn ? 4 : 1);
  }
}

TEST(Scan, MissingFoldersFailTheTask) {
  TempTree parent;
  ScanHarness h{TaskKind::kSync};
  h.state.gMakeErrorsLog = true;
  EXPECT_FALSE(h.Scan(parent / "nowhere", parent / "neither"));
  EXPECT_EQ(h.state.mErrString,
            "Can't find the folders \"" + parent / "nowhere" + "\" and \r\"" + parent / "neither" + "\"");
  EXPECT_EQ(h.state.gTotError, 1);

  // A pair that vanishes deeper down fails the whole task too.
  TempTree a{{{"d/x", "x"}, {"e", "e"}}}, b{{{"d/x", "x"}}};
  LinuxFileSystem real;
  FaultFileSystem fs{real, {FailEveryCall(FsOperation::kListFolder, a / "d", ENOENT),
                            FailEveryCall(FsOperation::kListFolder, b / "d", ENOENT)}};
  ScanHarness deeper{TaskKind::kSync, &fs};
  EXPECT_FALSE(deeper.Scan(a.Path(), b.Path()));
  EXPECT_FALSE(deeper.Node("e"));
}

TEST(Scan, UnreadableFolderIsAnErrorAndNothingInItIsDecided) {
  TempTree a{{{"d/x", "x"}, {"e/y", "y"}}}, b{{{"d/x", "x"}, {"d/z", "z"}, {"e/y", "y"}}};
  LinuxFileSystem real;
  FaultFileSystem fs{real, {FailEveryCall(FsOperation::kListFolder, a / "d", EACCES)}};
  ScanHarness h{TaskKind::kExactSync, &fs};
  h.services.indexed.insert(a / "d/z");  // were "z" judged, it would be deleted on B
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_TRUE(h.Modes().empty());
  EXPECT_EQ(h.state.gTotError, 1);
  EXPECT_NE(h.state.mErrString.find(a / "d"), std::string::npos);

  FaultFileSystem rootFails{real, {FailEveryCall(FsOperation::kListFolder, b.Path(), EIO)}};
  ScanHarness root{TaskKind::kExactSync, &rootFails};
  EXPECT_FALSE(root.Scan(a.Path(), b.Path()));
}

TEST(Scan, PairOfSingleFilesLooksAtTheOneName) {
  TempTree a{{{"doc", "new", T + 10}, {"other", "o"}}}, b{{{"doc", "old"}}};
  ScanHarness h{TaskKind::kSync};
  h.root.subItems.push_back(ScanNode{.name = "doc"});
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"doc", 4}}));
}

}  // namespace
}  // namespace marigold::scantest
