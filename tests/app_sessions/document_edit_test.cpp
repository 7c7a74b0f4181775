#include "app/document_edit.h"

#include <gtest/gtest.h>

#include "model/document_model.h"

namespace marigold {
namespace {

using Type = PlistValue::Type;

TEST(KeyPaths, WalkDictionariesByKeyAndListsByRow) {
  PlistDict root = NewTemplate();
  PlistDict& session = *GetSessionDict(root, 1);
  session.GetDict("multiDict")->GetArray("multiArray")->at(2).AsDict()->Set("source", "/data");
  std::string error;
  const PlistValue* source = FindKeyPath(session, "multiDict.multiArray.2.source", error);
  ASSERT_NE(source, nullptr) << error;
  EXPECT_EQ(*source, PlistValue("/data"));
  EXPECT_EQ(*FindKeyPath(session, "settingsDict.settTask", error), PlistValue(2));
  EXPECT_EQ(*FindKeyPath(root, "sessionsArray.1.settingsDict.settTask", error), PlistValue(2));

  struct Case { const char* path; const char* error; };
  const Case missing[] = {
      {"settingsDict.settTas", "\"settingsDict.settTas\" does not exist: \"settingsDict\" has no key \"settTas\""},
      {"nothing", "there is no key \"nothing\""},
      {"multiDict.multiArray.32.source", "\"multiDict.multiArray.32\" does not exist: \"multiArray\" has 32 rows (0 to 31)"},
      {"multiDict.multiArray.01", "\"multiArray\" is a list: \"01\" is not a row number"},
      {"multiDict.multiArray.-1", "\"-1\" is not a row number"},
      {"settingsDict.settTask.x", "\"settTask\" is an integer, it holds no \"x\""},
      {"settingsDict..settTask", "names are joined by single dots"},
      {"settingsDict.", "names are joined by single dots"},
      {"", "names are joined by single dots"},
  };
  for (const Case& c : missing) {
    error.clear();
    EXPECT_EQ(FindKeyPath(session, c.path, error), nullptr) << c.path;
    EXPECT_NE(error.find(c.error), std::string::npos) << c.path << ": " << error;
  }
}

TEST(TypedValues, TextIsReadStrictlyAsTheKeysType) {
  struct Case { Type type; const char* text; bool ok; };
  const Case cases[] = {
      {Type::Integer, "-12", true},  {Type::Integer, "1x", false},  {Type::Integer, "", false},
      {Type::Integer, " 1", false},  {Type::Integer, "+1", false},  {Type::Integer, "1.0", false},
      {Type::Integer, "99999999999999999999", false},
      {Type::Real, "1.5", true},     {Type::Real, "-2e3", true},    {Type::Real, "nan", false},
      {Type::Real, "inf", false},    {Type::Real, "1.5.", false},
      {Type::Boolean, "yes", true},  {Type::Boolean, "0", true},    {Type::Boolean, "True", false},
      {Type::Date, "2024-05-01T09:30:00Z", true},                   {Type::Date, "2024-02-30T09:30:00Z", false},
      {Type::Date, "2024-5-1T09:30:00Z", false},                    {Type::Date, "2024-05-01 09:30", false},
      {Type::Data, "", true},        {Type::Data, "aGk=", true},    {Type::Data, "aGk", false},
      {Type::Data, "a*k=", false},   {Type::Data, "a=Gk", false},
      {Type::String, "", true},      {Type::String, "naïve", true}, {Type::String, "\xff\xfe", false},
      {Type::Dict, "x", false},      {Type::Array, "", false},
  };
  for (const Case& c : cases) {
    std::string error;
    EXPECT_EQ(ParseTypedValue(c.type, c.text, error).has_value(), c.ok) << TypeName(c.type) << " \"" << c.text << "\"";
    EXPECT_EQ(error.empty(), c.ok) << c.text;
  }
}

TEST(TypedValues, PrintedValuesReadBackAsTheSameValue) {
  const PlistValue values[] = {PlistValue(-7),        PlistValue(0.1),       PlistValue(1e300),
                               PlistValue(true),      PlistValue(false),     PlistValue(PlistDate{94604400.0}),
                               PlistValue(PlistData{0, 1, 254, 255}),        PlistValue("a b\tc")};
  for (const PlistValue& value : values) {
    std::string error;
    EXPECT_EQ(ParseTypedValue(value.GetType(), ValueText(value), error), value) << ValueText(value) << error;
  }
  EXPECT_EQ(ValueText(PlistValue(PlistDate{0})), "2001-01-01T00:00:00Z");
  EXPECT_NE(ValueText(PlistValue(PlistDict{{"k", 1}})).find("<key>k</key>"), std::string::npos);
}

TEST(Assignments, ValuesTakeTheTypeOfANewDocument) {
  PlistDict root = NewTemplate();
  PlistDict& session = *GetSessionDict(root, 0);
  PlistDict& volume = *session.GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->at(63).AsDict();
  // A damaged or older file may hold a real where a new document has an integer, and keys a new
  // document lacks.
  session.GetDict("settingsDict")->Set("settExact", 1.0);
  volume.Set("dmgPath", "/old.dmg");
  std::string error;
  ASSERT_TRUE(ApplyAssignment(root, 0, "settingsDict.settExact=1", error)) << error;
  EXPECT_EQ(*session.GetDict("settingsDict")->Find("settExact"), PlistValue(1));
  ASSERT_TRUE(ApplyAssignment(root, 0, "autoMountDict.autoMountVolumeArray.63.dmgPath=/new.dmg", error)) << error;
  EXPECT_EQ(volume.GetString("dmgPath"), "/new.dmg");
  ASSERT_TRUE(ApplyAssignment(root, 0, "timerDict.timerArray.31.end=2030-01-01T00:00:00Z", error)) << error;
  ASSERT_TRUE(ApplyAssignment(root, 5, "sessionIndex=3", error)) << error;  // a document path needs no session
  EXPECT_EQ(root.GetInt("sessionIndex"), 3);
  ASSERT_TRUE(ApplyAssignment(root, 0, "consoleDict.topFolder=/a=b", error)) << error;  // the first = splits
  EXPECT_EQ(session.GetDict("consoleDict")->GetString("topFolder"), "/a=b");

  const PlistDict before = root;
  const char* refused[] = {"settingsDict.settExact=1x",  "settingsDict.settExact",        "=1",
                           "fileVersion=420",            "settingsDict={}",               "nosuchkey=1",
                           "timerDict.timerArray.0.start=yesterday", "sessionIndex=1.5"};
  for (const char* assignment : refused) {
    error.clear();
    EXPECT_FALSE(ApplyAssignment(root, 0, assignment, error)) << assignment;
    EXPECT_FALSE(error.empty()) << assignment;
  }
  EXPECT_FALSE(ApplyAssignment(root, 7, "settingsDict.settExact=0", error));
  EXPECT_EQ(root, before);
}

TEST(EditedDocuments, RulesHoldWhereTheDocumentChanged) {
  PlistDict before = NewTemplate();
  AddSession(1, "Third", before);
  int checked = 0;
  const std::vector<SessionCheck> checks{[&](const PlistDict& session) -> std::optional<std::string> {
    ++checked;
    if (session.GetDict("settingsDict")->GetInt("settTask") == 9) return std::string("the task must be 1 or 2");
    return std::nullopt;
  }};
  auto edit = [&](std::vector<std::string> assignments, std::int64_t index = 0) {
    PlistDict after = before;
    std::string error;
    for (const std::string& a : assignments) EXPECT_TRUE(ApplyAssignment(after, index, a, error)) << error;
    return CheckEditedDocument(before, after, checks);
  };
  EXPECT_EQ(edit({"settingsDict.settExact=1"}, 2), std::nullopt);
  EXPECT_EQ(checked, 1);  // only the changed session is checked
  EXPECT_EQ(edit({"settingsDict.settTask=9"}, 1), "\"Default Backup Session\": the task must be 1 or 2");
  EXPECT_EQ(edit({"sessionIndex=4"}), std::nullopt);
  EXPECT_NE(edit({"sessionIndex=3"}).value_or("").find("sessionIndex 3 names no session"), std::string::npos);
  EXPECT_EQ(edit({"consoleDict.sessionName=Third"}), "\"Third\": Name duplicated.");
  EXPECT_EQ(edit({"consoleDict.sessionName=All Sessions"}), "\"All Sessions\": Can't use this name.");
  EXPECT_EQ(edit({"consoleDict.sessionName="}), "\"\": Please insert a valid name.");
  // Names may swap in one edit, but two sessions may not end with one name.
  EXPECT_EQ(edit({"sessionsArray.0.consoleDict.sessionName=Third", "sessionsArray.2.consoleDict.sessionName=Default Sync Session"}),
            std::nullopt);
  EXPECT_EQ(edit({"sessionsArray.0.consoleDict.sessionName=X", "sessionsArray.1.consoleDict.sessionName=X"}),
            "\"X\": Name duplicated.");
}

}  // namespace
}  // namespace marigold
