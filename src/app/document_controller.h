// The document commands (New, Open, Save, Save As, Close, Quit and the template at launch and
// quit) as logic without widgets. What the commands do to windows, menus, timers and the run goes
// through DocumentHost, which the desktop program implements; questions go through AppPrompts.
//
// Document states, by the store's three flags: template (open, template) after launch; untitled
// (open, not saved, not template) after New; file (open, saved, not template) after Open, Save or
// Save As; closed (not open) after the main window closes.
#pragma once

#include <string>

#include "app/app_prompts.h"
#include "app/document_store.h"

namespace marigold {

// The application around the document commands. All calls come from the main thread.
class DocumentHost {
 public:
  virtual ~DocumentHost() = default;
  // True while a run is copying.
  virtual bool IsCopying() const = 0;
  // Asks the run to stop; with `quitWhenStopped` the application quits once it has stopped.
  virtual void StopCopying(bool quitWhenStopped) = 0;
  // Ends editing in the current option panel; false when the panel refuses (an invalid edit).
  virtual bool GetCurrentPanel() = 0;
  // Switches the timer check on or off and returns whether it was on.
  virtual bool TimerSyncEnabled(bool enabled) = 0;
  // Refreshes the session menu and the windows from the store's main dictionary.
  virtual void SetDocumentSessions() = 0;
  // The main window's title, and setting it.
  virtual std::string WindowTitle() const = 0;
  virtual void SetWindowTitle(const std::string& title) = 0;
  // The file the main window represents; "" for none.
  virtual void SetRepresentedFile(const std::string& path) = 0;
  virtual void ShowMainWindow() = 0;
  // Shows the panel of the main window with this identifier ("console", "documentClosed").
  virtual void ShowPanel(const std::string& identifier) = 0;
  // Adds the file to the system's recent documents.
  virtual void NoteRecentDocument(const std::string& path) = 0;
  // Clears the task comment field of the console.
  virtual void ClearTaskComment() = 0;
  // Resets the log text to the fixed log header.
  virtual void ResetLogText() = 0;
  virtual void Beep() = 0;
};

inline constexpr const char* kDocumentExtension = "mgy";

class DocumentController {
 public:
  // `previousTemplatePath` is the template file of the previous major version.
  DocumentController(DocumentStore& store, DocumentHost& host, AppPrompts& prompts,
                     std::string previousTemplatePath);

  // The template at launch: copies the previous version's template when ours is missing, then
  // reads it unless the reset key is held in a launch that is not hidden; a fresh document when
  // it is not read. The document is open and template afterwards.
  void ReadFileTemplate(bool optionKeyHeld, bool startedHidden);
  // Marks launching finished and opens the file handed over during launch, or shows the window.
  void FinishLaunching();

  // New document: ignored while copying; may ask to save the template or the open document.
  void FileNew();
  // Open panel for one document, then OpenFile. Ignored while copying.
  void FileOpen();
  // Opens `path` as the document; before launching has finished only remembers it (true).
  bool OpenFile(const std::string& path);
  // Save: to the document's file, or through a save panel when it has none. The write's result.
  bool SaveAFile();
  // Save As: always through a save panel. The write's result (false when cancelled).
  bool FileSaveAs();
  // Closes the document; `closingWindow` when the main window closes. False keeps it open.
  bool DoFileClose(bool closingWindow);
  // The application asks to quit: true when it may quit now.
  bool ShouldTerminate();
  // At quit: writes the document in memory, whichever it is, to the template file.
  bool WillTerminate();

  bool isLaunchingFinished = false;

 private:
  // The save question of quitting and closing: true to go on, false to stay.
  bool AskToSaveChanges();
  // The path the save panel gives, with the document extension when it lacks it.
  std::optional<std::string> AskForSavePath(const std::string& suggestedName);
  void BecomeFile(const std::string& path, bool representFile);

  DocumentStore& mStore;
  DocumentHost& mHost;
  AppPrompts& mPrompts;
  std::string mPreviousTemplatePath;
};

// The file name of `path` without folder and without its last extension.
std::string DisplayNameOfPath(const std::string& path);

}  // namespace marigold
