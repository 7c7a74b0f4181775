#include "app/session_management.h"

#include <gtest/gtest.h>

#include "model/document_model.h"

namespace marigold {
namespace {

std::vector<std::string> Names(const PlistDict& root) {
  std::vector<std::string> names;
  for (const PlistValue& session : *root.GetArray("sessionsArray")) names.push_back(SessionNameOf(session));
  return names;
}

// A document with sessions "S1" .. "Sn".
PlistDict DocumentWith(int count) {
  PlistDict root{{"sessionsArray", PlistArray()}, {"fileVersion", kFileVersion}, {"sessionIndex", 0}};
  for (int i = 1; i <= count; ++i) AddSession(i % 2 ? 1 : 2, "S" + std::to_string(i), root);
  return root;
}

TEST(SessionNames, TheSheetRefusesEmptyFixedAndDuplicatedNames) {
  PlistDict root = NewTemplate();
  struct Case {
    std::string name;
    std::optional<std::int64_t> renaming;
    NameVerdict verdict;
    std::string message;
  };
  const Case cases[] = {
      {"", std::nullopt, NameVerdict::Refuse, "Please insert a valid name."},
      {"", 0, NameVerdict::Refuse, "Please insert a valid name."},
      {"All Sessions", std::nullopt, NameVerdict::Refuse, "Can't use this name."},
      {"Sort Sessions…", 1, NameVerdict::Refuse, "Can't use this name."},
      {"Default Backup Session", std::nullopt, NameVerdict::Refuse, "Name duplicated."},
      {"Default Backup Session", 0, NameVerdict::Refuse, "Name duplicated."},
      {"Default Backup Session", 1, NameVerdict::Unchanged, ""},
      // Names compare exactly: another case is another name.
      {"default backup session", std::nullopt, NameVerdict::Accept, ""},
      {"all sessions", std::nullopt, NameVerdict::Accept, ""},
      {"Work", 0, NameVerdict::Accept, ""},
  };
  for (const Case& c : cases) {
    const NameCheck check = AskNameApply(root, c.name, c.renaming);
    EXPECT_EQ(check.verdict, c.verdict) << "\"" << c.name << "\"";
    EXPECT_EQ(check.message, c.message) << "\"" << c.name << "\"";
  }
}

TEST(SessionCommands, NewAndDuplicateAppendAndSelectUnderTheProposedNames) {
  PlistDict root = NewTemplate();
  EXPECT_EQ(ProposedNewSessionName(root), "Session 3");
  SessionCommandResult made = NewSession(root, ProposedNewSessionName(root));
  ASSERT_TRUE(made.ok) << made.refusal;
  EXPECT_EQ(made.selectedIndex, 2);
  EXPECT_EQ(root.GetInt("sessionIndex"), 2);
  EXPECT_EQ(*GetSessionDict(root, 2), DefaultSessionDict(1, "Session 3"));

  GetSessionDict(root, 1)->GetDict("settingsDict")->Set("settExact", 1);
  EXPECT_EQ(ProposedDuplicateName(root, 1), "Copy 4 of Default Backup Session");
  SessionCommandResult copied = DuplicateSession(root, 1, "Copy 4 of Default Backup Session");
  ASSERT_TRUE(copied.ok) << copied.refusal;
  EXPECT_EQ(copied.selectedIndex, 3);
  PlistDict expected = *GetSessionDict(root, 1);
  expected.GetDict("consoleDict")->Set("sessionName", "Copy 4 of Default Backup Session");
  EXPECT_EQ(*GetSessionDict(root, 3), expected);
  // The copy is deep: changing it leaves the original alone.
  GetSessionDict(root, 3)->GetDict("settingsDict")->Set("settExact", 0);
  EXPECT_EQ(GetSessionDict(root, 1)->GetDict("settingsDict")->GetInt("settExact"), 1);
}

TEST(SessionCommands, RefusalsChangeNothing) {
  struct Case {
    const char* what;
    std::function<SessionCommandResult(PlistDict&)> command;
    std::string refusal;
  };
  const Case cases[] = {
      {"new, taken name", [](PlistDict& r) { return NewSession(r, "S2"); }, "Name duplicated."},
      {"new, empty name", [](PlistDict& r) { return NewSession(r, ""); }, "Please insert a valid name."},
      {"duplicate All Sessions", [](PlistDict& r) { return DuplicateSession(r, 4, "X"); },
       "Can't duplicate the \"All\" Session."},
      {"duplicate to a fixed title", [](PlistDict& r) { return DuplicateSession(r, 0, "All Sessions"); },
       "Can't use this name."},
      {"rename All Sessions", [](PlistDict& r) { return RenameSession(r, 4, "X"); },
       "Can't rename the \"All\" Session."},
      {"rename to another's name", [](PlistDict& r) { return RenameSession(r, 0, "S3"); }, "Name duplicated."},
      {"remove All Sessions", [](PlistDict& r) { return RemoveSession(r, 4, false); },
       "Can't remove the \"All\" Session."},
      {"remove all but first on All Sessions", [](PlistDict& r) { return RemoveSession(r, 4, true); },
       "Can't remove the \"All\" Session."},
  };
  for (const Case& c : cases) {
    PlistDict root = DocumentWith(3);
    const PlistDict before = root;
    const SessionCommandResult result = c.command(root);
    EXPECT_FALSE(result.ok) << c.what;
    EXPECT_EQ(result.refusal, c.refusal) << c.what;
    EXPECT_EQ(root, before) << c.what;
  }
  PlistDict single = DocumentWith(1);
  EXPECT_EQ(RemoveSession(single, 0, false).refusal, "Can't remove the last Session.");
  EXPECT_EQ(RemoveSession(single, 0, true).refusal, "Can't remove the last Session.");
  EXPECT_EQ(SessionCount(single), 1);
}

TEST(SessionCommands, RemoveKeepsTheSelectionOnASession) {
  PlistDict root = DocumentWith(5);
  SessionCommandResult allButFirst = RemoveSession(root, 3, true);
  ASSERT_TRUE(allButFirst.ok);
  EXPECT_EQ(Names(root), std::vector<std::string>{"S1"});
  EXPECT_EQ(allButFirst.selectedIndex, 0);

  root = DocumentWith(3);
  EXPECT_EQ(RemoveSession(root, 2, false).selectedIndex, 1);  // the last goes: the one before it
  EXPECT_EQ(Names(root), (std::vector<std::string>{"S1", "S2"}));
  root = DocumentWith(3);
  EXPECT_EQ(RemoveSession(root, 0, false).selectedIndex, 0);  // the next one moves up into place
  EXPECT_EQ(Names(root), (std::vector<std::string>{"S2", "S3"}));
  EXPECT_EQ(root.GetInt("sessionIndex"), 0);
  EXPECT_EQ(RemoveConfirmationText(root, 1, false),
            "Are you sure you want to remove the current session \"S3\" definitively?");
}

TEST(SortSheet, DragAboveARowMovesTheDraggedSessionsThere) {
  PlistDict root = DocumentWith(5);
  SortSessions sheet(*root.GetArray("sessionsArray"));
  EXPECT_EQ(sheet.ObjectValue("progressive", 2), "3");
  EXPECT_EQ(sheet.ObjectValue("name", 2), "S3");

  std::optional<PlistArray> third = sheet.ArrayFromIndexes({2, 9});
  ASSERT_TRUE(third);
  EXPECT_EQ(sheet.AcceptDrop(*third, 0), std::vector<std::int64_t>{0});
  EXPECT_EQ(Names(PlistDict{{"sessionsArray", sheet.sessions()}}),
            (std::vector<std::string>{"S3", "S1", "S2", "S4", "S5"}));

  // Two rows dropped below the last row go to the end, in the order dragged.
  std::optional<PlistArray> two = sheet.ArrayFromIndexes({0, 2});
  EXPECT_EQ(sheet.AcceptDrop(*two, 5), (std::vector<std::int64_t>{3, 4}));
  EXPECT_EQ(Names(PlistDict{{"sessionsArray", sheet.sessions()}}),
            (std::vector<std::string>{"S1", "S4", "S5", "S3", "S2"}));

  // Dropped onto one of the dragged rows: they land before the next row that stays.
  std::optional<PlistArray> pair = sheet.ArrayFromIndexes({3, 4});
  EXPECT_EQ(sheet.AcceptDrop(*pair, 3), (std::vector<std::int64_t>{3, 4}));
  EXPECT_EQ(Names(PlistDict{{"sessionsArray", sheet.sessions()}}),
            (std::vector<std::string>{"S1", "S4", "S5", "S3", "S2"}));

  EXPECT_FALSE(sheet.ArrayFromIndexes({7, -1}));
  EXPECT_TRUE(sheet.AcceptDrop(PlistArray{PlistValue(DefaultSessionDict(1, "Elsewhere"))}, 0).empty());
}

TEST(SortSheet, DeletingEveryRowIsRefusedAndAppliedOrderFollowsTheSelection) {
  PlistDict root = DocumentWith(4);
  root.Set("sessionIndex", 2);
  SortSessions sheet(*root.GetArray("sessionsArray"));
  EXPECT_EQ(sheet.DeleteSelectedRows({3, 0, 2, 1}), "Can't remove all the Sessions.");
  EXPECT_EQ(sheet.numberOfRowsInTableView(), 4);
  EXPECT_EQ(sheet.DeleteSelectedRows({3, 0, 3}), std::nullopt);
  sheet.AcceptDrop(*sheet.ArrayFromIndexes({1}), 0);

  // Cancelling is simply not applying: the document still has its order.
  EXPECT_EQ(Names(root), (std::vector<std::string>{"S1", "S2", "S3", "S4"}));
  EXPECT_EQ(ApplySortedSessions(root, sheet.sessions()), 0);  // S3 was selected and is now first
  EXPECT_EQ(Names(root), (std::vector<std::string>{"S3", "S2"}));
  EXPECT_EQ(root.GetInt("sessionIndex"), 0);

  PlistDict all = DocumentWith(3);
  all.Set("sessionIndex", 4);
  EXPECT_EQ(ApplySortedSessions(all, PlistArray{(*all.GetArray("sessionsArray"))[1]}), 2);  // still All Sessions
  PlistDict gone = DocumentWith(3);
  gone.Set("sessionIndex", 0);
  EXPECT_EQ(ApplySortedSessions(gone, PlistArray{(*gone.GetArray("sessionsArray"))[2],
                                                 (*gone.GetArray("sessionsArray"))[1]}),
            1);
}

}  // namespace
}  // namespace marigold
