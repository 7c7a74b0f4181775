// The application object both front ends hold: it ties start-up, the preferences and the open
// document together for the life of the process. It stays thin; the rules live in the parts it
// holds.
#pragma once

#include <memory>
#include <string>

#include "app/app_prompts.h"
#include "app/document_controller.h"
#include "app/document_store.h"
#include "app/preferences.h"
#include "app/startup.h"

namespace marigold {

// A DocumentHost without windows, for the command line: nothing runs, nothing is shown.
class HeadlessDocumentHost : public DocumentHost {
 public:
  bool IsCopying() const override { return false; }
  void StopCopying(bool) override {}
  bool GetCurrentPanel() override { return true; }
  bool TimerSyncEnabled(bool enabled) override {
    bool was = mTimersOn;
    mTimersOn = enabled;
    return was;
  }
  void SetDocumentSessions() override {}
  std::string WindowTitle() const override { return mTitle; }
  void SetWindowTitle(const std::string& title) override { mTitle = title; }
  void SetRepresentedFile(const std::string&) override {}
  void ShowMainWindow() override {}
  void ShowPanel(const std::string&) override {}
  void NoteRecentDocument(const std::string&) override {}
  void ClearTaskComment() override {}
  void ResetLogText() override {}
  void Beep() override {}

 private:
  bool mTimersOn = false;
  std::string mTitle;
};

struct LaunchOptions {
  bool reset = false;          // the Alt key held at launch, or --reset: defaults and a fresh template
  bool startedHidden = false;  // a hidden launch reads the template even when reset is asked
  bool writesNothing = false;  // a dry run: the preferences are read, never written back
  StartupOptions startup;
};

class MainApp {
 public:
  // `host` receives the document's window commands; nullptr means a headless host.
  explicit MainApp(AppPrompts& prompts, DocumentHost* host = nullptr);
  ~MainApp();
  MainApp(const MainApp&) = delete;
  MainApp& operator=(const MainApp&) = delete;

  // Start-up, then the preferences (read, upgraded and written back), then the template
  // document. On a fatal start-up result nothing after start-up runs and nothing is written.
  const StartupResult& Launch(const LaunchOptions& options);
  // Writes the document in memory to the template file and the preferences (with the window
  // state when given). False when either write fails or the launch did not get that far.
  bool Quit(const WindowState* windowState = nullptr);

  bool IsLaunched() const { return mStartup.ok && mController != nullptr; }
  const StartupResult& startup() const { return mStartup; }
  const AppPaths& paths() const { return mStartup.paths; }
  const Identities& identities() const { return mStartup.identities; }
  const LogWords& logWords() const { return mStartup.logWords; }
  // Valid after a successful Launch.
  Preferences& preferences() { return *mPreferences; }
  DocumentStore& store() { return *mStore; }
  DocumentController& controller() { return *mController; }

 private:
  AppPrompts& mPrompts;
  HeadlessDocumentHost mHeadlessHost;
  DocumentHost& mHost;
  StartupResult mStartup;
  std::unique_ptr<Preferences> mPreferences;
  std::unique_ptr<DocumentStore> mStore;
  std::unique_ptr<DocumentController> mController;
};

}  // namespace marigold
