#include "app/document_controller.h"

#include <sys/stat.h>

#include <filesystem>

#include "model/document_model.h"
#include "util/plist_io.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

enum SaveAnswer { kSave = 0, kDontSave = 1, kCancel = 2 };

AlertRequest SaveQuestion(const char* text, const char* informative) {
  AlertRequest request;
  request.style = AlertRequest::Style::Warning;
  request.text = GLS(text);
  request.informative = GLS(informative);
  request.buttons = {GLS("Save"), GLS("Don't Save"), GLS("Cancel")};
  return request;
}

bool PathExists(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0;
}

}  // namespace

std::string DisplayNameOfPath(const std::string& path) {
  return std::filesystem::path(path).stem().string();
}

DocumentController::DocumentController(DocumentStore& store, DocumentHost& host, AppPrompts& prompts,
                                       std::string previousTemplatePath)
    : mStore(store), mHost(host), mPrompts(prompts),
      mPreviousTemplatePath(std::move(previousTemplatePath)) {}

void DocumentController::ReadFileTemplate(bool optionKeyHeld, bool startedHidden) {
  const std::string& templatePath = mStore.pathFileDocTemplate;
  if (!PathExists(templatePath) && !mPreviousTemplatePath.empty()) {
    std::error_code ignored;
    std::filesystem::copy_file(mPreviousTemplatePath, templatePath, ignored);
  }
  const bool skipTemplate = optionKeyHeld && !startedHidden;
  if (skipTemplate || !mStore.ReadDocumentFile(templatePath)) mStore.SetMainDict(NewTemplate());
  mStore.isDocumentOpen = true;
  mStore.isDocumentTemplate = true;
}

void DocumentController::FinishLaunching() {
  isLaunchingFinished = true;
  if (!mStore.pathFileToOpenAtLaunch.empty()) {
    const std::string path = mStore.pathFileToOpenAtLaunch;
    mStore.pathFileToOpenAtLaunch.clear();
    if (OpenFile(path)) return;
  }
  mHost.ShowMainWindow();
}

void DocumentController::FileNew() {
  if (mHost.IsCopying()) return;
  if (mStore.isDocumentOpen && mStore.isDocumentTemplate) {
    if (!(mStore.mainDict() == NewTemplate())) {
      switch (mPrompts.Alert(SaveQuestion(
          "This is a template document. Do you want to save these settings to a file before closing?",
          "If you create a new document without saving, you will lose these settings."))) {
        case kSave:
          if (!SaveAFile()) return;
          break;
        case kDontSave:
          break;
        default:
          return;
      }
    }
  }
  if (mStore.isDocumentOpen && !mStore.isDocumentTemplate && !DoFileClose(false)) return;

  mStore.pathDocumentFile.clear();
  mStore.SetMainDict(NewTemplate());
  mHost.SetDocumentSessions();
  mStore.isDocumentOpen = true;
  mStore.isDocumentSaved = false;
  mStore.isDocumentTemplate = false;
  mHost.SetRepresentedFile("");
  mHost.SetWindowTitle(GLS("Untitled"));
  mHost.ShowMainWindow();
  mHost.ShowPanel("console");
}

void DocumentController::FileOpen() {
  if (mHost.IsCopying()) return;
  if (std::optional<std::string> path = mPrompts.OpenPanel(kDocumentExtension)) OpenFile(*path);
}

bool DocumentController::OpenFile(const std::string& path) {
  if (mHost.IsCopying()) return false;
  if (!isLaunchingFinished) {
    mStore.pathFileToOpenAtLaunch = path;
    return true;
  }
  if (mStore.isDocumentOpen && !DoFileClose(false)) return false;

  // No timer may fire on a half-loaded document.
  const bool timersWereOn = mHost.TimerSyncEnabled(false);
  if (!mStore.ReadDocumentFile(path)) {
    if (timersWereOn) mHost.TimerSyncEnabled(true);
    return false;
  }
  mStore.pathDocumentFile = path;
  mStore.isDocumentOpen = true;
  mStore.isDocumentSaved = true;
  mStore.isDocumentTemplate = false;
  mHost.ClearTaskComment();
  mHost.SetDocumentSessions();
  mHost.SetRepresentedFile(path);
  mHost.SetWindowTitle(DisplayNameOfPath(path));
  mHost.ShowMainWindow();
  mHost.NoteRecentDocument(path);
  return true;
}

bool DocumentController::SaveAFile() {
  if (!mStore.pathDocumentFile.empty()) {
    if (!mStore.WriteFileSession(mStore.pathDocumentFile)) return false;
    mStore.isDocumentSaved = true;
    mStore.isDocumentOpen = true;
    mStore.isDocumentTemplate = false;
    return true;
  }
  std::optional<std::string> path = AskForSavePath(GLS("Untitled"));
  if (!path) return false;
  mStore.pathDocumentFile = *path;
  if (!mStore.WriteFileSession(*path)) return false;
  BecomeFile(*path, true);
  return true;
}

bool DocumentController::FileSaveAs() {
  const std::string suggested =
      mStore.pathDocumentFile.empty() ? GLS("Untitled") : mHost.WindowTitle();
  std::optional<std::string> path = AskForSavePath(suggested);
  if (!path) return false;
  mStore.pathDocumentFile = *path;
  if (!mStore.WriteFileSession(*path)) return false;
  BecomeFile(*path, false);
  return true;
}

bool DocumentController::DoFileClose(bool closingWindow) {
  if (mHost.IsCopying()) {
    mHost.Beep();
    return false;
  }
  if (!mHost.GetCurrentPanel()) return false;
  if (!mStore.isDocumentTemplate && !AskToSaveChanges()) return false;
  if (closingWindow) {
    mHost.TimerSyncEnabled(false);
    mHost.StopCopying(false);
    mStore.isDocumentOpen = false;
    mStore.isDocumentSaved = false;
    mHost.ResetLogText();
  } else {
    mHost.ShowPanel("documentClosed");
  }
  return true;
}

bool DocumentController::ShouldTerminate() {
  if (mHost.IsCopying()) {
    AlertRequest request;
    request.style = AlertRequest::Style::Warning;
    request.title = GLS("Warning:");
    request.text = GLS("Do you really want to quit in the middle of the current task?");
    request.buttons = {GLS("OK"), GLS("Cancel")};
    // Either way the application stays for now; OK quits once the run has stopped.
    if (mPrompts.Alert(request) == 0) mHost.StopCopying(true);
    return false;
  }
  if (!mHost.GetCurrentPanel()) return false;
  return AskToSaveChanges();
}

bool DocumentController::WillTerminate() {
  if (mStore.mainDict().empty()) return false;
  return mStore.WriteFileSession(mStore.pathFileDocTemplate);
}

bool DocumentController::AskToSaveChanges() {
  if (!mStore.isDocumentToBeSaved()) return true;
  switch (mPrompts.Alert(SaveQuestion("Do you want to save changes to this document before closing?",
                                      "If you don't save, your changes will be lost."))) {
    case kSave:
      return SaveAFile();
    case kDontSave:
      return true;
    default:
      return false;
  }
}

std::optional<std::string> DocumentController::AskForSavePath(const std::string& suggestedName) {
  std::optional<std::string> path = mPrompts.SavePanel(suggestedName, kDocumentExtension);
  if (!path || path->empty()) return std::nullopt;
  const std::string suffix = std::string(".") + kDocumentExtension;
  if (!path->ends_with(suffix)) *path += suffix;
  return path;
}

void DocumentController::BecomeFile(const std::string& path, bool representFile) {
  mStore.isDocumentSaved = true;
  mStore.isDocumentOpen = true;
  mStore.isDocumentTemplate = false;
  if (representFile) mHost.SetRepresentedFile(path);
  mHost.SetWindowTitle(DisplayNameOfPath(path));
  mHost.NoteRecentDocument(path);
}

}  // namespace marigold
