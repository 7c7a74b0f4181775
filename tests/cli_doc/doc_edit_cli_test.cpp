#include <gtest/gtest.h>
#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

#include "model/document_model.h"
#include "platform/linux_file_system.h"
#include "platform/plist_files.h"
#include "support/cli_runner.h"
#include "support/tree_values.h"
#include "util/plist_io.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

using cli_testing::CliHome;
using cli_testing::CliResult;
using cli_testing::ReadFileText;

// The bytes and the modification time: a refused edit must leave both as they were.
struct FileState {
  std::string bytes;
  timespec modified{};
  bool operator==(const FileState& other) const {
    return bytes == other.bytes && modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec;
  }
};

FileState StateOf(const std::string& path) {
  struct stat st {};
  ::stat(path.c_str(), &st);
  return {ReadFileText(path), st.st_mtim};
}

class DocEdit : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(h.Run({"doc", "new", file}).status, 0); }
  // Runs "doc VERB ..." or "doc session VERB ..." with the document right after the verb.
  CliResult Run(std::vector<std::string> args) const {
    args.insert(args.begin() + (args[1] == "session" ? 3 : 2), file);
    return h.Run(args);
  }
  PlistDict Written() const { return ReadPlistDictFile(file).value_or(PlistDict()); }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    const PlistDict root = Written();
    for (std::int64_t i = 0; i < SessionCount(root); ++i) {
      names.push_back(GetSessionDict(root, i)->GetDict("consoleDict")->GetString("sessionName"));
    }
    return names;
  }

  CliHome h;
  std::string file = h.Path("work.mgy");
};

TEST_F(DocEdit, SetThenGetRoundTrips) {
  CliResult set = Run({"doc", "set", "filterDict.filterArray.0.filterFileNameOn=1",
                       "filterDict.filterArray.0.filterFileNameField=*.tmp", "settingsDict.settMoveToTrash=1",
                       "multiDict.multiArray.2.source=/srv/a b", "timerDict.timerArray.0.start=2024-05-01T09:30:00Z"});
  ASSERT_EQ(set.status, 0) << set.err;
  EXPECT_EQ(set.out, "");
  const std::pair<const char*, const char*> expected[] = {
      {"filterDict.filterArray.0.filterFileNameOn", "1\n"}, {"filterDict.filterArray.0.filterFileNameField", "*.tmp\n"},
      {"settingsDict.settMoveToTrash", "1\n"},              {"multiDict.multiArray.2.source", "/srv/a b\n"},
      {"timerDict.timerArray.0.start", "2024-05-01T09:30:00Z\n"}, {"sessionIndex", "0\n"}};
  for (const auto& [path, value] : expected) {
    CliResult got = Run({"doc", "get", path});
    EXPECT_EQ(got.status, 0) << path << got.err;
    EXPECT_EQ(got.out, value) << path;
  }
  // The file holds typed values, and the rest of the document is as a new one has it.
  PlistDict want = NewTemplate();
  PlistDict& session = *GetSessionDict(want, 0);
  PlistDict& filter = *session.GetDict("filterDict")->GetArray("filterArray")->at(0).AsDict();
  filter.Set("filterFileNameOn", 1);
  filter.Set("filterFileNameField", "*.tmp");
  session.GetDict("settingsDict")->Set("settMoveToTrash", 1);
  session.GetDict("multiDict")->GetArray("multiArray")->at(2).AsDict()->Set("source", "/srv/a b");
  PlistDict written = Written();
  PlistDict& timerRow = *GetSessionDict(want, 0)->GetDict("timerDict")->GetArray("timerArray")->at(0).AsDict();
  timerRow.Set("start", *GetSessionDict(written, 0)->GetDict("timerDict")->GetArray("timerArray")->at(0).AsDict()->Find("start"));
  timerRow.Set("valid", 1);  // the editor's checks passed
  EXPECT_EQ(written, want);

  // Without a key path the whole selected session prints; --session picks another.
  CliResult whole = Run({"doc", "get"});
  ASSERT_EQ(whole.status, 0) << whole.err;
  EXPECT_EQ(ParsePlist(whole.out), PlistValue(*GetSessionDict(written, 0)));
  CliResult other = Run({"doc", "get", "--session", "Default Backup Session", "settingsDict"});
  EXPECT_EQ(ParsePlist(other.out), PlistValue(*GetSessionDict(written, 1)->GetDict("settingsDict")));
  ASSERT_EQ(Run({"doc", "set", "--session", "Default Backup Session", "settingsDict.settExact=1"}).status, 0);
  EXPECT_EQ(GetSessionDict(Written(), 1)->GetDict("settingsDict")->GetInt("settExact"), 1);
}

TEST_F(DocEdit, RefusedEditsLeaveTheFileUntouched) {
  ASSERT_EQ(Run({"doc", "set", "sessionIndex=3"}).status, 0);  // "All Sessions" is selected now
  const FileState before = StateOf(file);
  struct Case { std::vector<std::string> args; std::string error; };
  const Case cases[] = {
      {{"doc", "set", "--session", "Default Sync Session", "settingsDict.settTask=1x"}, "takes an integer, not \"1x\""},
      {{"doc", "set", "--session", "Default Sync Session", "settingsDict.settMoveToTrash=1", "settingsDict.settTas=1"},
       "has no key \"settTas\""},
      {{"doc", "set", "--session", "Default Sync Session", "multiDict.multiArray.32.source=/x"}, "has 32 rows"},
      {{"doc", "set", "--session", "Default Sync Session", "filterDict=1"}, "set its values one by one"},
      {{"doc", "set", "--session", "Default Sync Session", "consoleDict.sessionName=Default Backup Session"},
       "Name duplicated."},
      {{"doc", "set", "--session", "Nobody", "settingsDict.settExact=1"}, "no session is called \"Nobody\""},
      {{"doc", "set", "--session", "Default Sync Session", "timerDict.timerArray.0.start=2001-05-01T09:30:00Z"},
       "timerDict.timerArray.0: Can't set a Start Year less than 2002."},
      {{"doc", "set", "--session", "Default Sync Session", "filterDict.filterArray.3.filterFileNameOn=1"},
       "Please insert a valid file name."},
      {{"doc", "set", "--session", "Default Sync Session", "multiDict.multiOn=1", "multiDict.multiArray.0.source=/x",
        "multiDict.multiArray.0.destination=/y", "multiDict.multiArray.2.source=/z", "multiDict.multiArray.2.destination=/z"},
       "as source and destination at the row 3."},
      {{"doc", "set", "settingsDict.settExact=1"}, "name a session with --session"},
      {{"doc", "set", "sessionIndex=2"}, "names no session"},
      {{"doc", "set", "fileVersion=421"}, "every write stamps"},
      {{"doc", "set", "settExact"}, "KEYPATH=VALUE"},
      {{"doc", "get", "--session", "Default Sync Session", "settingsDict.nothing"}, "has no key \"nothing\""},
  };
  for (const Case& c : cases) {
    CliResult result = Run(c.args);
    EXPECT_EQ(result.status, 2) << c.args.back();
    EXPECT_NE(result.err.find(c.error), std::string::npos) << c.args.back() << ": " << result.err;
    EXPECT_TRUE(StateOf(file) == before) << c.args.back();
  }
}

TEST_F(DocEdit, SessionCommandsActAsTheMenuDoes) {
  CliResult added = Run({"doc", "session", "add"});
  ASSERT_EQ(added.status, 0) << added.err;
  EXPECT_EQ(added.out, "Session 3\n");
  EXPECT_EQ(Written().GetInt("sessionIndex"), 2);
  EXPECT_EQ(GetSessionDict(Written(), 2)->GetDict("settingsDict")->GetInt("settTask"), 1);
  CliResult copied = Run({"doc", "session", "duplicate", "Default Backup Session"});
  EXPECT_EQ(copied.out, "Copy 4 of Default Backup Session\n");
  ASSERT_EQ(Run({"doc", "session", "rename", "Session 3", "Work"}).status, 0);
  ASSERT_EQ(Run({"doc", "session", "add", "Later"}).status, 0);
  EXPECT_EQ(Names(), (std::vector<std::string>{"Default Sync Session", "Default Backup Session", "Work",
                                               "Copy 4 of Default Backup Session", "Later"}));
  ASSERT_EQ(Run({"doc", "session", "remove", "Later"}).status, 0);
  EXPECT_EQ(Written().GetInt("sessionIndex"), 3);  // the last went: the one before it is selected

  const FileState before = StateOf(file);
  struct Case { std::vector<std::string> args; std::string error; };
  const Case refused[] = {
      {{"doc", "session", "add", "Work"}, "Warning: Name duplicated."},
      {{"doc", "session", "rename", "All Sessions", "Any"}, "Warning: Can't rename the \"All\" Session."},
      {{"doc", "session", "duplicate", "All Sessions"}, "Warning: Can't duplicate the \"All\" Session."},
      {{"doc", "session", "remove", "Nobody"}, "no session is called \"Nobody\""},
      {{"doc", "session", "remove"}, "needs the NAME of a session, or --all-but-first"},
  };
  for (const Case& c : refused) {
    CliResult result = Run(c.args);
    EXPECT_EQ(result.status, 2) << c.error;
    EXPECT_NE(result.err.find(c.error), std::string::npos) << result.err;
    EXPECT_TRUE(StateOf(file) == before) << c.error;
  }
  EXPECT_EQ(Run({"doc", "session", "rename", "Work", "Work"}).status, 0);  // no change, nothing written
  EXPECT_TRUE(StateOf(file) == before);

  ASSERT_EQ(Run({"doc", "session", "remove", "--all-but-first"}).status, 0);
  EXPECT_EQ(Names(), std::vector<std::string>{"Default Sync Session"});
  EXPECT_EQ(Written().GetInt("sessionIndex"), 0);
  CliResult last = Run({"doc", "session", "remove", "Default Sync Session"});
  EXPECT_EQ(last.status, 2);
  EXPECT_NE(last.err.find("Can't remove the last Session."), std::string::npos);
}

// Root writes through permissions, but not into an immutable folder, where the atomic write's
// temporary file cannot be made: the command fails with status 1 and the old file stays.
TEST_F(DocEdit, AFailedWriteExitsOneAndKeepsTheOldFile) {
  const std::string folder = h.Path("locked");
  const std::string locked = folder + "/doc.mgy";
  ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
  ASSERT_EQ(h.Run({"doc", "new", locked}).status, 0);
  LinuxFileSystem fs;
  if (::geteuid() != 0 || !fs.SetLocked(folder, true)) GTEST_SKIP() << "no immutable flag for this user here";
  const FileState before = StateOf(locked);
  const CliResult result = h.Run({"doc", "set", locked, "settingsDict.settExact=1"});
  fs.SetLocked(folder, false);
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("Can't write the file"), std::string::npos) << result.err;
  EXPECT_TRUE(StateOf(locked) == before);
}

// Another property-list tool may write the keys in another order; blank filter rows stay blank.
TEST_F(DocEdit, RowsWithSortedKeysAreStillBlank) {
  PlistDict root = Written();
  for (std::int64_t i = 0; i < SessionCount(root); ++i) {
    for (PlistValue& value : *GetSessionDict(root, i)->GetDict("filterDict")->GetArray("filterArray")) {
      const PlistDict row = *value.AsDict();
      std::vector<std::string> keys = row.Keys();
      std::sort(keys.rbegin(), keys.rend());
      PlistDict sorted;
      for (const std::string& key : keys) sorted.Set(key, *row.Find(key));
      value = sorted;
    }
  }
  ASSERT_TRUE(WriteXmlPlistFile(SystemFileSystem(), file, PlistValue(root)));
  CliResult set = Run({"doc", "set", "settingsDict.settExact=1"});
  EXPECT_EQ(set.status, 0) << set.err;
}

TEST_F(DocEdit, APasswordIsReadFromStandardInputAndStoredScrambledInAPrivateFile) {
  const CliResult set = h.Run({"doc", "set", file, "autoMountDict.autoMountVolumeArray.2.password=-"}, "moss-and-rain\n");
  ASSERT_EQ(set.status, 0) << set.err;
  const PlistDict root = ReadPlistDictFile(file).value_or(PlistDict());
  const PlistDict* row =
      GetSessionDict(root, 0)->GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->at(2).AsDict();
  ASSERT_NE(row->GetData("password"), nullptr);
  EXPECT_EQ(GetWellData(*row->GetData("password")), "moss-and-rain");
  EXPECT_EQ(ReadFileText(file).find("moss-and-rain"), std::string::npos);
  struct stat info {};
  ASSERT_EQ(::stat(file.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
}

TEST_F(DocEdit, ScriptCheckPrintsWhatThePanelWouldSay) {
  ASSERT_EQ(h.Run({"doc", "set", file, "appleScriptDict.asStartOn=1", "appleScriptDict.asStartText=echo fine",
                   "appleScriptDict.asEndOn=1", "appleScriptDict.asEndText=if true"})
                .status,
            0);
  const CliResult bad = h.Run({"doc", "script-check", file});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out.rfind("Error in the second script.\nError: 2.\n", 0), 0u) << bad.out;

  ASSERT_EQ(h.Run({"doc", "set", file, "appleScriptDict.asEndText=true"}).status, 0);
  const CliResult good = h.Run({"doc", "script-check", file});
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.out, "");
}

}  // namespace
}  // namespace marigold
