// The log window: the last run's log, or a log file, with the next and previous error. What it
// loads and where each error starts are the log library's; the window shows and selects.
#pragma once

#include <QDialog>
#include <string>

#include "platform/file_system.h"

class QTextEdit;

namespace marigold {

class LogWindow : public QDialog {
  Q_OBJECT
 public:
  LogWindow(FileSystem& fs, QWidget* parent);

  // Shows the file at `path` (or, when there is none, `lastRunLog`); false when nothing is
  // shown (an unreadable file is reported).
  bool Fill(const std::string& path, const std::string& lastRunLog);
  // Selects the next error marker after the selection (with `previous`, the one before); beeps
  // when the log has none.
  void FindError(bool previous);
  QTextEdit* view() const { return mView; }

 private:
  void OpenLogFile();

  FileSystem& mFs;
  std::string mText;  // as loaded: offsets into it are the library's
  std::string mLastRunLog;
  QTextEdit* mView;
};

}  // namespace marigold
