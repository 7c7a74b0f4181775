#include "app/document_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "model/document_model.h"
#include "documents/fixture_documents.h"
#include "support/fault_file_system.h"
#include "platform/linux_file_system.h"
#include "support/scripted_prompts.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"
#include "util/plist_io.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

using trees::ModeOf;

PlistDict WithPassword(PlistValue password, int row = 5) {
  PlistDict root = NewTemplate();
  GetSessionDict(root, 1)->GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->at(row).AsDict()->Set(
      "password", std::move(password));
  return root;
}

class DocumentFiles : public ::testing::Test {
 protected:
  DocumentStore MakeStore(PlistDict root = {}) {
    DocumentStore store(mFolder.Join("template.plist"), mPrompts);
    store.SetMainDict(std::move(root));
    return store;
  }
  TempFolder mFolder;
  ScriptedPrompts mPrompts;
};

// Other writers' encodings are read by the upgrade tests' fixtures; here our own file must read
// back as the document that was written, awkward text and data included.
TEST_F(DocumentFiles, OurFilesReadBackEqual) {
  PlistDict root = NewTemplate();
  root.Set("fileVersion", 300);
  PlistDict& session = *GetSessionDict(root, 0);
  session.GetDict("consoleDict")->Set("sessionName", "Fotos für Oma – 写真 & <co>");
  session.GetDict("timerDict")->Set("timerOn", -3);
  session.GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->front().AsDict()->Set(
      "aliasData", PlistData{0, 1, 253, 255});
  DocumentStore store = MakeStore(root);
  const std::string path = mFolder.Join("ours.mgy");
  ASSERT_TRUE(store.WriteFileSession(path));
  EXPECT_EQ(store.mainDict().GetInt("fileVersion"), 420) << "writing stamps the version";
  DocumentStore reader = MakeStore();
  ASSERT_TRUE(reader.ReadDocumentFile(path));
  EXPECT_EQ(reader.mainDict(), store.mainDict());
  EXPECT_TRUE(mPrompts.Alerts().empty());
}

TEST_F(DocumentFiles, PasswordsMakeTheFilePrivateExceptForTheTemplate) {
  const PlistDict secret = WithPassword(SetWellDataWithDigit("secret", '4'));
  const struct { const char* name; PlistDict root; std::optional<mode_t> before; mode_t after; } cases[] = {
      {"fresh.mgy", secret, std::nullopt, 0700},
      {"existing.mgy", secret, 0644, 0700},
      {"template.plist", secret, 0644, 0644},
      {"plain.mgy", NewTemplate(), 0640, 0640},
  };
  for (const auto& c : cases) {
    const std::string path = mFolder.Join(c.name);
    if (c.before) ::chmod(mFolder.WriteFile(c.name, "old").c_str(), *c.before);
    DocumentStore store = MakeStore(c.root);
    ASSERT_TRUE(store.WriteFileSession(path)) << c.name;
    EXPECT_EQ(ModeOf(path), c.after) << c.name;
  }
  EXPECT_TRUE(mPrompts.Alerts().empty());
}

// A failed save, with or without a password, leaves the old file as it was (bytes and mode) and
// no temporary file; a document never saved before leaves nothing at all.
TEST_F(DocumentFiles, AFailedSaveKeepsTheOldFileAndLeavesNoTemporary) {
  const struct { const char* name; FsOperation operation; int error; bool hasOld; bool password; } cases[] = {
      {"disk full mid-write", FsOperation::kWriteFile, ENOSPC, true, true},
      {"disk full on a first save", FsOperation::kWriteFile, ENOSPC, false, true},
      {"sync fails", FsOperation::kSyncFile, EIO, true, false},
      {"rename refused", FsOperation::kRename, EACCES, true, true},
      {"folder refuses the temporary", FsOperation::kStartFileWrite, EROFS, true, false},
      {"no such folder", FsOperation::kStartFileWrite, ENOENT, false, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    const std::string path = folder.Join("doc.mgy");
    if (c.hasOld) ::chmod(folder.WriteFile("doc.mgy", "old").c_str(), 0644);
    LinuxFileSystem real;
    FaultFileSystem fs(real, {FailCall(c.operation, path, c.error)});
    ScriptedPrompts prompts;
    DocumentStore store(folder.Join("template.plist"), prompts, fs);
    store.SetMainDict(c.password ? WithPassword(SetWellDataWithDigit("secret", '1')) : NewTemplate());

    EXPECT_FALSE(store.WriteFileSession(path));
    ASSERT_EQ(prompts.Alerts().size(), 1u);
    EXPECT_EQ(prompts.Alerts()[0].text, "Can't write the file \"" + path + "\" to the disk.");  // no reason given
    EXPECT_EQ(prompts.Alerts()[0].style, AlertRequest::Style::Critical);
    EXPECT_EQ(prompts.Alerts()[0].title, "Warning:");
    const trees::Tree left = c.hasOld ? trees::Tree{{"doc.mgy", "old"}} : trees::Tree{};
    EXPECT_EQ(trees::Read(folder.Path()), left);
    if (c.hasOld) {
      EXPECT_EQ(ModeOf(path), 0644u);
    }
  }
}

TEST(VolumeListContainsPassword, FindsAndRemovesRealPasswords) {
  const struct { const char* name; PlistDict root; bool found; } cases[] = {
      {"new document", NewTemplate(), false},
      {"no sessions", PlistDict{{"fileVersion", 420}}, false},
      {"three characters", WithPassword(SetWellDataWithDigit("abc", '2')), true},
      {"two characters are not restored", WithPassword(SetWellDataWithDigit("ab", '2')), false},
      {"a string is not scrambled data", WithPassword(PlistValue("plain")), false},
  };
  for (const auto& c : cases) {
    PlistDict root = c.root;
    EXPECT_EQ(VolumeListContainsPassword(root, false), c.found) << c.name;
    EXPECT_EQ(root, c.root) << c.name;
    EXPECT_EQ(VolumeListContainsPassword(root, true), c.found) << c.name;
    EXPECT_FALSE(VolumeListContainsPassword(root, false)) << c.name;
  }
}

TEST_F(DocumentFiles, OnlyChangedDocumentsAreToBeSaved) {
  DocumentStore store = MakeStore(NewTemplate());
  EXPECT_FALSE(store.isDocumentToBeSaved()) << "not open";
  store.isDocumentOpen = true;
  EXPECT_FALSE(store.isDocumentToBeSaved()) << "the template";
  store.isDocumentTemplate = false;
  EXPECT_FALSE(store.isDocumentToBeSaved()) << "untitled and equal to a new document";
  GetSessionDict(store.mainDict(), 0)->GetDict("consoleDict")->Set("topFolder", "/srv");
  EXPECT_TRUE(store.isDocumentToBeSaved()) << "untitled and changed";

  auto open = [&](const std::string& path) {
    DocumentStore opened = MakeStore();
    EXPECT_TRUE(opened.ReadDocumentFile(path));
    opened.pathDocumentFile = path;
    opened.isDocumentOpen = true;
    opened.isDocumentTemplate = false;
    return opened;
  };
  const std::string path = mFolder.Join("doc.mgy");
  ASSERT_TRUE(store.WriteFileSession(path));
  DocumentStore reopened = open(path);
  EXPECT_FALSE(reopened.isDocumentToBeSaved()) << "byte-identical to its file";
  reopened.mainDict().Set("sessionIndex", 1);
  EXPECT_TRUE(reopened.isDocumentToBeSaved());
  EXPECT_TRUE(open(FixtureDocument("v410", "xml")).isDocumentToBeSaved()) << "upgraded";
}

std::string Nested(int depth) {
  std::string text = "<plist version=\"1.0\"><dict><key>fileVersion</key><integer>420</integer><key>x</key>";
  for (int i = 0; i < depth; ++i) text += "<array>";
  for (int i = 0; i < depth; ++i) text += "</array>";
  return text + "</dict></plist>";
}

// Damaged files are refused silently, the open document stays, and the file is not touched.
TEST_F(DocumentFiles, DamagedFilesAreRefusedAndLeftAsTheyAre) {
  const std::string good = ReadWholeFile(FixtureDocument("v420", "xml")).value();
  const std::string goodBinary = ReadWholeFile(FixtureDocument("v420", "binary")).value();
  auto doc = [](const std::string& version, const std::string& sessions) {
    return "<plist version=\"1.0\"><dict>" + version +
           "<key>sessionsArray</key>" + sessions + "</dict></plist>";
  };
  const std::pair<std::string, std::string> cases[] = {
      {"empty", ""},
      {"truncated xml", good.substr(0, good.size() / 2)},
      {"truncated binary", goodBinary.substr(0, goodBinary.size() - 40)},
      {"garbage", std::string(100000, '\x9c')},
      {"array root", "<plist version=\"1.0\"><array><integer>420</integer></array></plist>"},
      {"no version", doc("", "<array><dict/></array>")},
      {"version as text", doc("<key>fileVersion</key><string>420</string>", "<array><dict/></array>")},
      {"sessions as dictionary", doc("<key>fileVersion</key><integer>420</integer>", "<dict/>")},
      {"no session", doc("<key>fileVersion</key><integer>300</integer>", "<array/>")},
      {"a session and a number", doc("<key>fileVersion</key><integer>300</integer>", "<array><dict/><integer>1</integer></array>")},
      {"deeply nested", Nested(100000)},
      {"huge", doc("<key>fileVersion</key><integer>420</integer>", "<string>" + std::string(40 << 20, 'x') + "</string>")},
  };
  for (const auto& [name, bytes] : cases) {
    const std::string path = mFolder.WriteFile(name + ".mgy", bytes);
    DocumentStore store = MakeStore(NewTemplate());
    EXPECT_FALSE(store.ReadDocumentFile(path)) << name;
    EXPECT_EQ(store.mainDict(), NewTemplate()) << name;
    EXPECT_TRUE(ReadWholeFile(path) == bytes) << name;
  }
  DocumentStore store = MakeStore();
  EXPECT_FALSE(store.ReadDocumentFile(mFolder.Path()));
  EXPECT_FALSE(store.ReadDocumentFile(mFolder.Join("absent.mgy")));
  EXPECT_TRUE(mPrompts.Alerts().empty());
}

TEST_F(DocumentFiles, FilesCompareInChunks) {
  const std::string big(600000, 'm');
  std::string lastDiffers = big;
  lastDiffers[2 * 262144 - 1] = 'n';
  const std::string a = mFolder.WriteFile("a", big);
  const std::pair<std::string, bool> cases[] = {
      {big, true}, {lastDiffers, false}, {big + "m", false}, {big.substr(1), false}, {"", false}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(IsFileEqualToFile(a, mFolder.WriteFile("b" + std::to_string(i), cases[i].first)), cases[i].second) << i;
  }
  EXPECT_FALSE(IsFileEqualToFile(a, mFolder.Join("absent")));
  EXPECT_FALSE(IsFileEqualToFile(mFolder.Path(), mFolder.Path()));
}

}  // namespace
}  // namespace marigold
