#include "app/document_upgrade.h"

#include <gtest/gtest.h>

#include "model/document_model.h"
#include "app/document_store.h"
#include "app/icon_shrink.h"
#include "documents/fixture_documents.h"
#include "support/scripted_prompts.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

const std::vector<std::string> kNineSubDicts = {
    "consoleDict",   "timerDict",     "multiDict",       "filterDict",  "excludeDict",
    "conflictsDict", "autoMountDict", "appleScriptDict", "settingsDict"};

const PlistDict& Sub(const PlistDict& root, int session, const char* key) {
  return *GetSessionDict(root, session)->GetDict(key);
}
const PlistDict& Row(const PlistDict& dict, const char* list, std::size_t index) {
  return *dict.GetArray(list)->at(index).AsDict();
}
std::vector<std::int64_t> Column(const PlistDict& dict, const char* list, const char* key, std::size_t n) {
  std::vector<std::int64_t> values;
  for (std::size_t i = 0; i < n; ++i) values.push_back(Row(dict, list, i).GetInt(key, -99));
  return values;
}

// Every fixture is read from both encodings; the outcome must not depend on the encoding.
class FixtureUpgrade : public ::testing::TestWithParam<const char*> {
 protected:
  PlistDict Open(const std::string& version) {
    DocumentStore store("/nonexistent/template.plist", mPrompts);
    EXPECT_TRUE(store.ReadDocumentFile(FixtureDocument(version, GetParam()))) << version;
    EXPECT_TRUE(mPrompts.Alerts().empty());
    return store.mainDict();
  }
  ScriptedPrompts mPrompts;
};

TEST_P(FixtureUpgrade, Version300FlatSessionsGainTheNineSubDictionaries) {
  const PlistDate before = Now();
  const PlistDict root = Open("v300");
  EXPECT_EQ(root.GetInt("fileVersion"), 300) << "the version stays until the next write";
  for (int i = 0; i < 2; ++i) EXPECT_EQ(GetSessionDict(root, i)->Keys(), kNineSubDicts) << i;

  // The first session had settCheckBackupDate 0 and settOverride 1, the second 1 and 0.
  EXPECT_EQ(Sub(root, 0, "conflictsDict").GetInt("conflictSyncRadio"), 1);
  EXPECT_EQ(Sub(root, 1, "conflictsDict").GetInt("conflictSyncRadio"), 2);
  EXPECT_EQ(Sub(root, 0, "conflictsDict").GetInt("conflictBackupRadio2"), 2);
  EXPECT_EQ(Sub(root, 1, "conflictsDict").GetInt("conflictBackupRadio2"), 1);
  EXPECT_EQ(Sub(root, 0, "conflictsDict").GetInt("conflictFileFolderRadio"), 2);
  EXPECT_EQ(Sub(root, 0, "conflictsDict").size(), 12u);

  const PlistDict& settings = Sub(root, 0, "settingsDict");
  EXPECT_EQ(settings.size(), 15u) << "no settCheckBackupDate, settOverride or settCP* key is left";
  EXPECT_EQ(settings.GetInt("settExact"), 1);
  EXPECT_EQ(settings.GetInt("settMoveToTrash"), 0) << "reset for documents before 320";

  const PlistDict& timers = Sub(root, 0, "timerDict");
  EXPECT_EQ(timers.GetInt("timerOn"), 0);
  ASSERT_EQ(timers.GetArray("timerArray")->size(), 32u);
  EXPECT_GE(Row(timers, "timerArray", 31).GetDate("start")->seconds, before.seconds - 1);

  // onOff cycles 1, 0, 2, 5 in the fixture: only an exact 1 stays on.
  const std::vector<std::int64_t> onOff = {1, 0, 0, 0, 1};
  EXPECT_EQ(Column(Sub(root, 0, "multiDict"), "multiArray", "onOff", 5), onOff);
  EXPECT_EQ(Column(Sub(root, 0, "excludeDict"), "excludeArray", "onOff", 5), onOff);

  // Row 1 has filterKindOn without its pop-up, row 2 both; owner, group and size are added.
  const PlistDict& filters = Sub(root, 0, "filterDict");
  EXPECT_EQ(Column(filters, "filterArray", "filterKindOn", 3), (std::vector<std::int64_t>{0, 0, 1}));
  EXPECT_EQ(Column(filters, "filterArray", "filterKindPop", 3), (std::vector<std::int64_t>{0, 0, 3}));
  EXPECT_EQ(Row(filters, "filterArray", 2).GetString("filterOwnerField"), "robin");
  EXPECT_EQ(Row(filters, "filterArray", 5).GetInt("filterFileSizeBytesPop", -1), 0);
  EXPECT_EQ(Row(filters, "filterArray", 5).GetString("filterGroupField", "absent"), "");

  const PlistDict& autoMount = Sub(root, 0, "autoMountDict");
  ASSERT_EQ(autoMount.GetArray("autoMountVolumeArray")->size(), 64u);
  EXPECT_NE(Row(autoMount, "autoMountVolumeArray", 63).GetData("volumeIcon"), nullptr);
  EXPECT_EQ(Sub(root, 0, "appleScriptDict").GetString("asStartText"), kDefaultScriptText);
  EXPECT_EQ(Sub(root, 1, "consoleDict").GetString("sessionName"), "Music");
}

TEST_P(FixtureUpgrade, Version402KeepsWhatItAlreadyHad) {
  const PlistDict root = Open("v402");
  // Volume rows without host are replaced; timers survive, since 402 is after 319.
  EXPECT_EQ(Sub(root, 0, "autoMountDict").GetInt("autoMountVolumeOn"), 0);
  EXPECT_EQ(Sub(root, 0, "autoMountDict").GetArray("autoMountVolumeArray")->size(), 64u);
  EXPECT_EQ(UnixSecondsFromDate(*Row(Sub(root, 0, "timerDict"), "timerArray", 0).GetDate("start")),
            1053160200.0);
  EXPECT_EQ(Sub(root, 0, "conflictsDict").GetInt("conflictBackupRadio2"), 2);
  EXPECT_EQ(Sub(root, 0, "conflictsDict").GetInt("conflictSyncRadio"), 3);
  EXPECT_EQ(Sub(root, 0, "settingsDict").GetInt("settMoveToTrash"), 1);
  EXPECT_FALSE(GetSessionDict(root, 0)->Contains("settCPOn"));

  // A volume list with hosts stays, and so do scripts and rules the session already had.
  EXPECT_EQ(Sub(root, 1, "autoMountDict").GetArray("autoMountVolumeArray")->size(), 1u);
  EXPECT_EQ(Sub(root, 1, "appleScriptDict").GetString("asStartText"), "echo before");
  EXPECT_EQ(Sub(root, 1, "conflictsDict").GetInt("conflictBackupRadio2"), 3);
  EXPECT_EQ(Sub(root, 1, "settingsDict").GetInt("settPackagesFolders"), 1);
}

// The compression tag of the first IFD of a little-endian TIFF.
std::uint32_t TiffCompression(const PlistData& d) {
  const std::size_t ifd = d[4] | d[5] << 8 | d[6] << 16 | static_cast<std::size_t>(d[7]) << 24;
  for (std::size_t i = 0, n = d[ifd] | d[ifd + 1] << 8; i < n; ++i) {
    const std::size_t e = ifd + 2 + 12 * i;
    if ((d[e] | d[e + 1] << 8) == 259) return d[e + 8] | d[e + 9] << 8;
  }
  return 0;
}

TEST_P(FixtureUpgrade, Version410DropsDuplicateVolumesAndShrinksIcons) {
  const PlistDict raw = RawFixture("v410", GetParam());
  const PlistDict root = Open("v410");
  EXPECT_EQ(root.GetInt("sessionIndex"), 2) << "7 with three sessions";

  const PlistDict& autoMount = Sub(root, 0, "autoMountDict");
  std::vector<std::string> users;
  for (const PlistValue& row : *autoMount.GetArray("autoMountVolumeArray")) {
    users.push_back(row.AsDict()->GetString("user"));
  }
  EXPECT_EQ(users, (std::vector<std::string>{"big", "second", "small", "empty one", "empty two", "junk"}));

  const PlistData& icon = *Row(autoMount, "autoMountVolumeArray", 0).GetData("volumeIcon");
  const std::optional<RgbaImage> image = DecodeTiff(icon);
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(std::make_pair(image->width, image->height), std::make_pair(64u, 64u));
  EXPECT_EQ(TiffCompression(icon), 5u) << "LZW";
  // The fixture's icon is red on the left half and blue on the right.
  EXPECT_EQ(image->pixels[10 * 256 + 0], 255);
  EXPECT_EQ(image->pixels[10 * 256 + 63 * 4 + 2], 255);
  EXPECT_EQ(image->pixels[10 * 256 + 63 * 4 + 0], 0);

  const PlistDict& rawAutoMount = Sub(raw, 0, "autoMountDict");
  EXPECT_EQ(Row(autoMount, "autoMountVolumeArray", 2), Row(rawAutoMount, "autoMountVolumeArray", 3))
      << "a 32 by 32 icon is kept";
  EXPECT_EQ(Row(autoMount, "autoMountVolumeArray", 5), Row(rawAutoMount, "autoMountVolumeArray", 6))
      << "data that is no image is kept";
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Sub(root, i, "conflictsDict").GetInt("conflictFileFolderRadio"), 2) << i;
    EXPECT_EQ(Sub(root, i, "conflictsDict").GetInt("conflictFileFolderAsk"), 0) << i;
    EXPECT_FALSE(Sub(root, i, "settingsDict").Contains("settSkipCheckPermissions")) << "410 is after 409";
  }
}

TEST_P(FixtureUpgrade, Version419OnlyChangesTheFileFolderRule) {
  PlistDict expected = RawFixture("v419", GetParam());
  for (int i = 0; i < 2; ++i) {
    PlistDict& conflicts = *GetSessionDict(expected, i)->GetDict("conflictsDict");
    conflicts.Set("conflictFileFolderRadio", 2);
    conflicts.Set("conflictFileFolderAsk", 0);
  }
  // Its sessionIndex 3 with two sessions is All Sessions, and its duplicate volumes stay.
  EXPECT_EQ(Open("v419"), expected);
}

TEST_P(FixtureUpgrade, Version420IsLeftAsItIs) {
  EXPECT_EQ(Open("v420"), RawFixture("v420", GetParam()));
}

TEST_P(FixtureUpgrade, Version421IsRefusedWithTheAlertExceptAsTemplate) {
  const std::string path = FixtureDocument("v421", GetParam());
  DocumentStore store("/nonexistent/template.plist", mPrompts);
  store.SetMainDict(NewTemplate());
  EXPECT_FALSE(store.ReadDocumentFile(path));
  EXPECT_EQ(store.mainDict(), NewTemplate());
  ASSERT_EQ(mPrompts.Alerts().size(), 1u);
  const AlertRequest& alert = mPrompts.Alerts()[0];
  EXPECT_EQ(alert.style, AlertRequest::Style::Critical);
  EXPECT_EQ(alert.title, "Warning:");
  EXPECT_EQ(alert.text, "Can't open the file\r\"" + path + "\"\rbecause it has been created by a higher version.");
  EXPECT_EQ(alert.buttons, (std::vector<std::string>{"OK"}));

  DocumentStore asTemplate(path, mPrompts);
  EXPECT_FALSE(asTemplate.ReadDocumentFile(path));
  EXPECT_EQ(mPrompts.Alerts().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Encodings, FixtureUpgrade, ::testing::Values("xml", "binary"));

TEST(RemoveDuplicateVolumeRows, OnlyRowsWithSchemeHostAndMountPointCanBeDuplicates) {
  auto row = [](const char* scheme, const char* mount, const char* tag) {
    PlistDict r{{"scheme", scheme}, {"host", "h"}, {"user", tag}};
    if (mount) r.Set("mountPoint", mount);
    return PlistValue(r);
  };
  PlistArray rows = {row("afp", "/m", "1"), row("afp", nullptr, "2"), row("afp", nullptr, "3"),
                     row("", "/m", "4"),    row("", "/m", "5"),       PlistValue(9),
                     row("afp", "/m", "6"), row("smb", "/m", "7")};
  RemoveDuplicateVolumeRows(rows);
  std::vector<std::string> tags;
  for (const PlistValue& r : rows) tags.push_back(r.IsDict() ? r.AsDict()->GetString("user") : "-");
  EXPECT_EQ(tags, (std::vector<std::string>{"2", "3", "4", "5", "-", "6", "7"}));
}

TEST(UpgradeDocument, RepairsWrongTypesWithDefaults) {
  PlistDict root = NewTemplate();
  root.Set("sessionIndex", "two");
  PlistDict& session = *GetSessionDict(root, 1);
  session.Set("consoleDict", "text");
  session.Set("settingsDict", 3.5);
  session.Remove("excludeDict");
  session.GetDict("timerDict")->Set("timerArray", 12);
  (*session.GetDict("filterDict")->GetArray("filterArray"))[3] = PlistValue("row");
  ASSERT_TRUE(UpgradeDocument(root, 420, Now()));

  EXPECT_EQ(root.Find("sessionIndex")->AsInteger() ? root.GetInt("sessionIndex") : -1, 0);
  const PlistDict& repaired = *GetSessionDict(root, 1);
  EXPECT_EQ(*repaired.GetDict("consoleDict"), (PlistDict{{"topFolder", ""}, {"bottomFolder", ""}}));
  EXPECT_EQ(repaired.GetDict("settingsDict")->GetInt("settTask"), 2) << "backup never writes to side A";
  EXPECT_FALSE(repaired.Contains("excludeDict")) << "missing parts stay missing";
  EXPECT_EQ(repaired.GetDict("timerDict")->GetArray("timerArray")->size(), 32u);
  EXPECT_EQ(Row(*repaired.GetDict("filterDict"), "filterArray", 3), DefaultFilterRow());
  EXPECT_EQ(*GetSessionDict(root, 0), *GetSessionDict(NewTemplate(), 0));
}

// Every key of an old session, replaced by values of every other type, must upgrade without
// crashing into a document whose containers all have the right type.
TEST(UpgradeDocument, SurvivesEveryKeyOfTheWrongType) {
  const PlistDict base = RawFixture("v402", "xml");
  ASSERT_FALSE(base.empty());
  const PlistValue wrong[] = {PlistValue("s"), PlistValue(7), PlistValue(PlistArray{PlistValue(1)}),
                              PlistValue(PlistDict{{"k", 1}}), PlistValue(PlistData{1, 2})};
  for (const std::int64_t version : {300, 410}) {
    for (const auto& [key, unused] : *GetSessionDict(base, 1)) {
      for (const PlistValue& replacement : wrong) {
        PlistDict root = base;
        GetSessionDict(root, 1)->Set(key, replacement);
        ASSERT_TRUE(UpgradeDocument(root, version, Now())) << key;
        for (const std::string& sub : kNineSubDicts) {
          const PlistValue* dict = GetSessionDict(root, 1)->Find(sub);
          if (dict == nullptr) continue;
          ASSERT_TRUE(dict->IsDict()) << key << " " << sub;
          for (const auto& [listKey, list] : *dict->AsDict()) {
            if (!listKey.ends_with("Array")) continue;
            ASSERT_TRUE(list.IsArray()) << key << " " << listKey;
            for (const PlistValue& row : *list.AsArray()) ASSERT_TRUE(row.IsDict()) << key << " " << listKey;
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace marigold
