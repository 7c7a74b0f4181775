#include "ui/desktop_proxy.h"

#include <QApplication>
#include <QThread>

#include "ui/alert_dialog.h"
#include "ui/preview_window.h"
#include "ui/replace_dialog.h"
#include "util/strings_table.h"

namespace marigold {

DesktopProxy::DesktopProxy(QWidget* window) : QObject(window), mWindow(window) {}

template <typename Result, typename Ask>
Result DesktopProxy::OnGuiThread(Ask ask) {
  if (QThread::currentThread() == thread()) return ask();
  Result result{};
  if (mDetached) return result;
  QMetaObject::invokeMethod(this, [&] { result = ask(); }, Qt::BlockingQueuedConnection);
  return result;
}

template <typename Change>
void DesktopProxy::Update(Change change) {
  bool post = false;
  {
    std::lock_guard<std::mutex> lock(mMutex);
    change(mProgress);
    post = !mRedrawPending;
    mRedrawPending = true;
  }
  if (post) QMetaObject::invokeMethod(this, [this] { emit progressChanged(); }, Qt::QueuedConnection);
}

void DesktopProxy::Detach() {
  mDetached = true;
  // Dropping a waiting call wakes its worker with the answer's default value.
  QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
}

ConsoleProgress DesktopProxy::TakeProgress() {
  std::lock_guard<std::mutex> lock(mMutex);
  ConsoleProgress taken = mProgress;
  mProgress.newErrors.clear();
  mProgress.beep = false;
  mRedrawPending = false;
  return taken;
}

bool DesktopProxy::ConfirmRun(const std::string& title, const std::string& question) {
  return OnGuiThread<bool>([&] {
    AlertRequest request;
    request.title = title;
    request.text = question;
    request.buttons = {GLS("OK"), GLS("Cancel")};
    return ShowAlert(mWindow, request) == 0;
  });
}

int DesktopProxy::Alert(const AlertRequest& request) {
  return OnGuiThread<int>([&] { return ShowAlert(mWindow, request); });
}

int DesktopProxy::AskReplace(const ReplaceRequest& request) {
  return OnGuiThread<int>([&] {
    ReplaceDialog dialog(request, mWindow);
    return dialog.Ask();
  });
}

bool DesktopProxy::ShowPreview(PreviewEditor& editor) {
  return OnGuiThread<bool>([&] {
    PreviewWindow window(editor, mPreviewExpanded, mWindow);
    return window.exec() == QDialog::Accepted;
  });
}

void DesktopProxy::RunStarted() {
  Update([](ConsoleProgress& p) { p = ConsoleProgress{}; p.running = true; });
}

void DesktopProxy::RunEnded() {
  Update([](ConsoleProgress& p) {
    p.running = false;
    p.indeterminate = false;
  });
}

void DesktopProxy::ShowMainFolders(const std::string& source, const std::string& dest) {
  Update([&](ConsoleProgress& p) {
    p.sideA = source;
    p.sideB = dest;
  });
}

void DesktopProxy::SetTaskComment(const std::string& text) {
  Update([&](ConsoleProgress& p) { p.taskComment = text; });
}

void DesktopProxy::ShowIndeterminateProgress() {
  Update([](ConsoleProgress& p) { p.indeterminate = true; });
}

void DesktopProxy::UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) {
  Update([&](ConsoleProgress& p) {
    p.itemsToDo = itemsToDo;
    p.itemsTotal = itemsTotal;
  });
}

void DesktopProxy::UpdateBytesCopied(std::uint64_t copied, std::uint64_t total) {
  Update([&](ConsoleProgress& p) {
    p.bytesCopied = copied;
    p.bytesTotal = total;
  });
}

void DesktopProxy::ReportError(const std::string& message) {
  Update([&](ConsoleProgress& p) { p.newErrors.push_back(message); });
}

void DesktopProxy::Beep() {
  Update([](ConsoleProgress& p) { p.beep = true; });
}

}  // namespace marigold
