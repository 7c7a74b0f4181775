#include "app/document_controller.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "model/document_model.h"
#include "documents/fixture_documents.h"
#include "support/scripted_prompts.h"
#include "support/temp_folder.h"
#include "util/plist_io.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

// Records, in order, what the commands ask of the windows and the run.
class RecordingHost : public DocumentHost {
 public:
  bool IsCopying() const override { return copying; }
  void StopCopying(bool quit) override { calls.push_back(quit ? "StopCopying(quit)" : "StopCopying"); }
  bool GetCurrentPanel() override { return panelAccepts; }
  bool TimerSyncEnabled(bool enabled) override {
    calls.push_back(enabled ? "TimersOn" : "TimersOff");
    return std::exchange(timersOn, enabled);
  }
  void SetDocumentSessions() override { calls.push_back("SetDocumentSessions"); }
  std::string WindowTitle() const override { return title; }
  void SetWindowTitle(const std::string& text) override { calls.push_back("Title:" + (title = text)); }
  void SetRepresentedFile(const std::string& path) override { calls.push_back("Represented:" + path); }
  void ShowMainWindow() override { calls.push_back("ShowMainWindow"); }
  void ShowPanel(const std::string& identifier) override { calls.push_back("Panel:" + identifier); }
  void NoteRecentDocument(const std::string& path) override { calls.push_back("Recent:" + path); }
  void ClearTaskComment() override { calls.push_back("ClearTaskComment"); }
  void ResetLogText() override { calls.push_back("ResetLogText"); }
  void Beep() override { calls.push_back("Beep"); }
  bool Called(const std::string& call) const { return std::ranges::find(calls, call) != calls.end(); }

  bool copying = false, panelAccepts = true, timersOn = true;
  std::string title;
  std::vector<std::string> calls;
};

struct Flags {
  bool open, saved, isTemplate;
  bool operator==(const Flags&) const = default;
};
constexpr Flags kTemplate{true, false, true}, kUntitled{true, false, false}, kFile{true, true, false};

enum Answer { kSave = 0, kDontSave = 1, kCancel = 2 };
const char* const kChangesQuestion = "Do you want to save changes to this document before closing?";

// One application: a store, a host and a controller over a private folder, launched.
struct App {
  TempFolder folder;
  ScriptedPrompts prompts;
  RecordingHost host;
  DocumentStore store{folder.Join("template.plist"), prompts};
  DocumentController controller{store, host, prompts, folder.Join("Marigold 3.0 Template.plist")};

  explicit App(bool launch = true) {
    if (!launch) return;
    controller.ReadFileTemplate(false, false);
    controller.FinishLaunching();
    host.calls.clear();
  }
  Flags CurrentFlags() const { return {store.isDocumentOpen, store.isDocumentSaved, store.isDocumentTemplate}; }
  void Change(const std::string& topFolder = "/changed") {
    GetSessionDict(store.mainDict(), 0)->GetDict("consoleDict")->Set("topFolder", topFolder);
  }
  std::string TopFolder() const {
    return GetSessionDict(store.mainDict(), 0)->GetDict("consoleDict")->GetString("topFolder");
  }
  std::string TopFolderOnDisk(const std::string& path) const {
    const std::optional<PlistDict> root = ReadPlistDictFile(path);
    return root ? GetSessionDict(*root, 0)->GetDict("consoleDict")->GetString("topFolder") : "<none>";
  }
  // Writes a document whose first top folder is "/on disk" and opens it.
  std::string OpenSavedDocument() {
    PlistDict root = NewTemplate();
    GetSessionDict(root, 0)->GetDict("consoleDict")->Set("topFolder", "/on disk");
    const std::string path = folder.WriteFile("work.mgy", ToXmlPlist(root));
    EXPECT_TRUE(controller.OpenFile(path));
    host.calls.clear();
    return path;
  }
};

TEST(DocumentCommands, NewFromAnUnchangedTemplateAsksNothing) {
  App app;
  app.controller.FileNew();
  EXPECT_TRUE(app.prompts.Alerts().empty());
  EXPECT_EQ(app.CurrentFlags(), kUntitled);
  EXPECT_EQ(app.store.mainDict(), NewTemplate());
  EXPECT_EQ(app.host.calls, (std::vector<std::string>{"SetDocumentSessions", "Represented:", "Title:Untitled",
                                                       "ShowMainWindow", "Panel:console"}));
}

TEST(DocumentCommands, NewFromAChangedTemplateFollowsTheAnswer) {
  const struct { const char* name; Answer answer; bool panelGivesPath; Flags flags; std::string topFolder; } cases[] = {
      {"save", kSave, true, kUntitled, ""},
      {"save cancelled in the panel", kSave, false, kTemplate, "/changed"},
      {"don't save", kDontSave, false, kUntitled, ""},
      {"cancel", kCancel, false, kTemplate, "/changed"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    App app;
    app.Change();
    app.prompts.QueueAlertAnswer(c.answer);
    const std::string path = app.folder.Join("saved");
    if (c.answer == kSave) app.prompts.QueueSavePath(c.panelGivesPath ? std::optional(path) : std::nullopt);
    app.controller.FileNew();
    ASSERT_EQ(app.prompts.Alerts().size(), 1u);
    EXPECT_EQ(app.prompts.Alerts()[0].text,
              "This is a template document. Do you want to save these settings to a file before closing?");
    EXPECT_EQ(app.prompts.Alerts()[0].informative,
              "If you create a new document without saving, you will lose these settings.");
    EXPECT_EQ(app.prompts.Alerts()[0].buttons, (std::vector<std::string>{"Save", "Don't Save", "Cancel"}));
    EXPECT_EQ(app.CurrentFlags(), c.flags);
    EXPECT_EQ(app.TopFolder(), c.topFolder);
    EXPECT_EQ(app.TopFolderOnDisk(path + ".mgy"), c.panelGivesPath ? "/changed" : "<none>");
  }
}

// New from a changed file and Quit share the question; Save fails when a folder is in the way.
TEST(DocumentCommands, NewAndQuitAskToSaveChangesAndFollowTheAnswer) {
  const struct {
    const char* name; Answer answer; bool writable; bool proceeds; std::string onDisk;
  } cases[] = {
      {"save", kSave, true, true, "/changed"},
      {"save fails", kSave, false, false, "/on disk"},
      {"don't save", kDontSave, true, true, "/on disk"},
      {"cancel", kCancel, true, false, "/on disk"},
  };
  for (const bool quitting : {false, true}) {
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(quitting ? "quit, " : "new, ") + c.name);
      App app;
      const std::string path = app.OpenSavedDocument();
      app.Change();
      if (!c.writable) app.store.pathDocumentFile = app.folder.Path();
      app.prompts.QueueAlertAnswer(c.answer);
      if (quitting) {
        EXPECT_EQ(app.controller.ShouldTerminate(), c.proceeds);
      } else {
        app.controller.FileNew();
        EXPECT_EQ(app.CurrentFlags(), c.proceeds ? kUntitled : kFile);
      }
      ASSERT_GE(app.prompts.Alerts().size(), 1u);
      EXPECT_EQ(app.prompts.Alerts()[0].text, kChangesQuestion);
      EXPECT_EQ(app.prompts.Alerts()[0].informative, "If you don't save, your changes will be lost.");
      EXPECT_EQ(app.TopFolderOnDisk(path), c.onDisk);
    }
  }
}

TEST(DocumentCommands, QuitAsksNothingWhenNothingChangedAndWaitsForTheRun) {
  App app;
  app.Change();
  EXPECT_TRUE(app.controller.ShouldTerminate()) << "the template is never asked about";
  app.OpenSavedDocument();
  EXPECT_TRUE(app.controller.ShouldTerminate());
  app.host.panelAccepts = false;
  EXPECT_FALSE(app.controller.ShouldTerminate());
  EXPECT_TRUE(app.prompts.Alerts().empty());

  app.host.copying = true;
  app.prompts.QueueAlertAnswer(1);
  app.prompts.QueueAlertAnswer(0);
  EXPECT_FALSE(app.controller.ShouldTerminate());
  EXPECT_FALSE(app.host.Called("StopCopying(quit)")) << "Cancel";
  EXPECT_FALSE(app.controller.ShouldTerminate());
  EXPECT_EQ(app.host.calls, (std::vector<std::string>{"StopCopying(quit)"}));
  EXPECT_EQ(app.prompts.Alerts()[0].title, "Warning:");
  EXPECT_EQ(app.prompts.Alerts()[0].text, "Do you really want to quit in the middle of the current task?");
  EXPECT_EQ(app.prompts.Alerts()[0].buttons, (std::vector<std::string>{"OK", "Cancel"}));
}

TEST(DocumentCommands, NothingStartsWhileCopying) {
  App app;
  app.Change();
  app.host.copying = true;
  app.prompts.QueueOpenPath(FixtureDocument("v420", "xml"));
  app.controller.FileNew();
  app.controller.FileOpen();
  EXPECT_FALSE(app.controller.OpenFile(FixtureDocument("v420", "xml")));
  EXPECT_FALSE(app.controller.DoFileClose(true));
  EXPECT_EQ(app.prompts.OpenPanelCount(), 0);
  EXPECT_EQ(app.CurrentFlags(), kTemplate);
  EXPECT_EQ(app.TopFolder(), "/changed");
  EXPECT_EQ(app.host.calls, (std::vector<std::string>{"Beep"}));
}

TEST(DocumentCommands, AFileGivenDuringLaunchOpensOnceLaunchingHasFinished) {
  App app(false);
  const std::string path = FixtureDocument("v420", "binary");
  EXPECT_TRUE(app.controller.OpenFile(path));
  EXPECT_TRUE(app.host.calls.empty());
  app.controller.ReadFileTemplate(false, false);
  EXPECT_EQ(app.store.mainDict(), NewTemplate());

  app.controller.FinishLaunching();
  EXPECT_EQ(app.CurrentFlags(), kFile);
  EXPECT_EQ(app.store.pathDocumentFile, path);
  EXPECT_EQ(app.store.mainDict(), RawFixture("v420", "binary"));
  EXPECT_EQ(app.host.title, "v420-binary");
  for (const std::string& call : std::vector<std::string>{"Represented:" + path, "Recent:" + path,
                                                           "ClearTaskComment", "SetDocumentSessions"}) {
    EXPECT_TRUE(app.host.Called(call)) << call;
  }
}

TEST(DocumentCommands, AFailedOpenKeepsTheDocumentAndTheTimers) {
  App app;
  app.Change("/mine");
  const std::string damaged = app.folder.WriteFile("damaged.mgy", "<plist><dict>");
  for (const bool timersWereOn : {true, false}) {
    app.host.timersOn = timersWereOn;
    app.prompts.QueueOpenPath(damaged);
    app.controller.FileOpen();
    EXPECT_EQ(app.host.timersOn, timersWereOn);
  }
  app.controller.OpenFile(FixtureDocument("v421", "xml"));
  EXPECT_EQ(app.prompts.Alerts().size(), 1u) << "only the newer document's alert";
  EXPECT_EQ(app.TopFolder(), "/mine");
  EXPECT_EQ(app.store.pathDocumentFile, "");
}

TEST(DocumentCommands, ClosingTheWindowClosesTheDocument) {
  App app;
  app.OpenSavedDocument();
  EXPECT_TRUE(app.controller.DoFileClose(true));
  EXPECT_EQ(app.CurrentFlags(), (Flags{false, false, false}));
  EXPECT_EQ(app.host.calls, (std::vector<std::string>{"TimersOff", "StopCopying", "ResetLogText"}));

  App other;
  other.host.panelAccepts = false;
  EXPECT_FALSE(other.controller.DoFileClose(true));
  EXPECT_EQ(other.CurrentFlags(), kTemplate);
  other.host.panelAccepts = true;
  EXPECT_TRUE(other.controller.DoFileClose(false));
  EXPECT_EQ(other.host.calls, (std::vector<std::string>{"Panel:documentClosed"}));
}

TEST(DocumentCommands, SaveAndSaveAsChooseTheirFile) {
  App app;
  app.controller.FileNew();
  app.Change();
  app.host.calls.clear();
  app.prompts.QueueSavePath(app.folder.Join("first"));
  ASSERT_TRUE(app.controller.SaveAFile());
  const std::string first = app.folder.Join("first.mgy");
  EXPECT_EQ(app.CurrentFlags(), kFile);
  EXPECT_EQ(app.host.calls, (std::vector<std::string>{"Represented:" + first, "Title:first", "Recent:" + first}));

  app.Change("/again");
  app.host.calls.clear();
  ASSERT_TRUE(app.controller.SaveAFile());
  EXPECT_TRUE(app.host.calls.empty()) << "the same file, without a panel";
  EXPECT_EQ(app.TopFolderOnDisk(first), "/again");

  const std::string second = app.folder.Join("second.mgy");
  app.prompts.QueueSavePath(second);
  ASSERT_TRUE(app.controller.FileSaveAs());
  EXPECT_EQ(app.store.pathDocumentFile, second);
  EXPECT_EQ(app.prompts.SavePanelNames(), (std::vector<std::string>{"Untitled", "first"}));
  EXPECT_EQ(app.host.calls, (std::vector<std::string>{"Title:second", "Recent:" + second}));
  EXPECT_FALSE(app.controller.FileSaveAs()) << "cancelled";
  EXPECT_EQ(app.store.pathDocumentFile, second);
}

TEST(DocumentCommands, TheTemplateIsReadUnlessTheResetKeyIsHeld) {
  PlistDict saved = NewTemplate();
  GetSessionDict(saved, 1)->GetDict("consoleDict")->Set("topFolder", "/from template");
  const std::string bytes = ToXmlPlist(saved);
  const struct {
    const char* name; std::optional<std::string> current, previous; bool keyHeld, hidden, fromTemplate;
  } cases[] = {
      {"normal launch", bytes, std::nullopt, false, false, true},
      {"reset key held", bytes, std::nullopt, true, false, false},
      {"reset key held in a hidden launch", bytes, std::nullopt, true, true, true},
      {"previous version's template", std::nullopt, bytes, false, false, true},
      {"no template at all", std::nullopt, std::nullopt, false, false, false},
      {"newer template", ReadWholeFile(FixtureDocument("v421", "xml")), std::nullopt, false, false, false},
      {"damaged template", std::string("<plist>"), bytes, false, false, false},
  };
  for (const auto& c : cases) {
    App app(false);
    if (c.current) app.folder.WriteFile("template.plist", *c.current);
    if (c.previous) app.folder.WriteFile("Marigold 3.0 Template.plist", *c.previous);
    app.controller.ReadFileTemplate(c.keyHeld, c.hidden);
    EXPECT_EQ(app.store.mainDict(), c.fromTemplate ? saved : NewTemplate()) << c.name;
    EXPECT_TRUE(app.store.isDocumentOpen && app.store.isDocumentTemplate) << c.name;
    EXPECT_TRUE(app.prompts.Alerts().empty()) << c.name;
  }
}

TEST(DocumentCommands, QuittingWritesTheDocumentToTheTemplate) {
  App app;
  app.OpenSavedDocument();
  GetSessionDict(app.store.mainDict(), 0)->GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->at(0)
      .AsDict()->Set("password", SetWellDataWithDigit("secret", '7'));
  ASSERT_TRUE(app.controller.WillTerminate());
  const std::string templatePath = app.folder.Join("template.plist");
  struct stat info {};
  ASSERT_EQ(::stat(templatePath.c_str(), &info), 0);
  EXPECT_NE(info.st_mode & 0777, 0700u) << "the template is not made private";

  DocumentStore next(templatePath, app.prompts);
  DocumentController nextController(next, app.host, app.prompts, "");
  nextController.ReadFileTemplate(false, false);
  EXPECT_EQ(next.mainDict(), app.store.mainDict());
  EXPECT_EQ(next.pathDocumentFile, "");
}

}  // namespace
}  // namespace marigold
