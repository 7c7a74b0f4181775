#include "app/main_app.h"

#include <syslog.h>

namespace marigold {

MainApp::MainApp(AppPrompts& prompts, DocumentHost* host)
    : mPrompts(prompts), mHost(host ? *host : mHeadlessHost) {}

MainApp::~MainApp() = default;

const StartupResult& MainApp::Launch(const LaunchOptions& options) {
  mStartup = InitVariables(options.startup);
  if (!mStartup.ok) return mStartup;
  // A root instance must not take the user's desktop settings over; ours live in our own file,
  // which the preferences give back to everyone when root writes it.
  if (mStartup.identities.isRoot) ::syslog(LOG_NOTICE, "DO NOT SYNC PREFS");

  mPreferences = std::make_unique<Preferences>(mStartup.paths, mStartup.identities.isRoot);
  mPreferences->ReadFilePreferences(options.reset, !options.writesNothing);

  mStore = std::make_unique<DocumentStore>(mStartup.paths.pathFileDocTemplate, mPrompts);
  mController = std::make_unique<DocumentController>(*mStore, mHost, mPrompts,
                                                     mStartup.paths.previousTemplateFile);
  mController->ReadFileTemplate(options.reset, options.startedHidden);
  mHost.SetDocumentSessions();
  return mStartup;
}

bool MainApp::Quit(const WindowState* windowState) {
  if (!IsLaunched()) return false;
  bool templateWritten = mController->WillTerminate();
  bool prefsWritten = windowState ? mPreferences->WriteFilePreferences(true, *windowState)
                                  : mPreferences->WriteFilePreferences(false);
  // The executable's owner and mode are never changed: root rights come from pkexec, not from a
  // set-user-id program, so there is nothing to give back here.
  return templateWritten && prefsWritten;
}

}  // namespace marigold
