// The run's proxy in the desktop program. Questions (alerts, the replace prompt, the preview) are
// answered on the GUI thread while the worker waits for them; the GUI thread itself never waits
// for the worker. Console updates only record the newest values and ask for one redraw: however
// fast the worker reports, the window redraws at most once per turn of the event loop.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "engine/appkit_proxy.h"

namespace marigold {

// What the console shows of a run, as the proxy last heard it.
struct ConsoleProgress {
  bool running = false;
  bool indeterminate = false;
  std::int64_t itemsToDo = -1;  // -1: not counted yet
  std::int64_t itemsTotal = 0;
  std::uint64_t bytesCopied = 0;
  std::uint64_t bytesTotal = 0;
  std::string taskComment;
  std::string sideA, sideB;  // the folders of the task being copied
  std::vector<std::string> newErrors;  // reported since the last redraw
  bool beep = false;
};

class DesktopProxy : public QObject, public AppkitProxy {
  Q_OBJECT
 public:
  // Dialogs open over `window`; the proxy must live on the GUI thread.
  explicit DesktopProxy(QWidget* window);

  bool ConfirmRun(const std::string& title, const std::string& question) override;
  int Alert(const AlertRequest& request) override;
  int AskReplace(const ReplaceRequest& request) override;
  bool ShowPreview(PreviewEditor& editor) override;

  void RunStarted() override;
  void RunEnded() override;
  void ShowMainFolders(const std::string& source, const std::string& dest) override;
  void SetTaskComment(const std::string& text) override;
  void ShowIndeterminateProgress() override;
  void UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) override;
  void UpdateBytesCopied(std::uint64_t copied, std::uint64_t total) override;
  void ReportError(const std::string& message) override;
  void Beep() override;

  // GUI thread: the newest values; clears the errors and the beep it hands over.
  ConsoleProgress TakeProgress();
  // GUI thread, before a run: whether the preview opens every folder.
  void SetPreviewExpanded(bool expanded) { mPreviewExpanded = expanded; }
  // GUI thread, when the window goes away during a run: every question still waiting, and every
  // later one, gets its cautious answer (stop, skip), so the worker can wind down unattended.
  void Detach();

 signals:
  // Emitted on the GUI thread when there is something new to draw.
  void progressChanged();

 private:
  // Runs `ask` on the GUI thread and gives its answer to the calling worker.
  template <typename Result, typename Ask>
  Result OnGuiThread(Ask ask);
  // Records an update under the lock; asks for one redraw when none is pending.
  template <typename Change>
  void Update(Change change);

  QPointer<QWidget> mWindow;
  std::atomic<bool> mDetached{false};
  bool mPreviewExpanded = false;  // read and written on the GUI thread only
  std::mutex mMutex;
  ConsoleProgress mProgress;
  bool mRedrawPending = false;
};

}  // namespace marigold
