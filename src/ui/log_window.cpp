#include "ui/log_window.h"

#include <QApplication>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include "logging/log_window.h"
#include "ui/alert_dialog.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// The text as shown: each "\r" becomes one "\n", so that offsets stay the same in both.
QString Shown(const std::string& text) {
  QString shown = ToQ(text);
  shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return shown;
}

// Converts between the view's positions (UTF-16 units) and the library's (UTF-8 bytes).
std::size_t BytesBefore(const QString& text, int position) {
  return static_cast<std::size_t>(text.left(position).toUtf8().size());
}
int PositionOf(const std::string& text, std::size_t bytes) {
  return static_cast<int>(QString::fromUtf8(text.data(), static_cast<qsizetype>(bytes)).size());
}

}  // namespace

LogWindow::LogWindow(FileSystem& fs, QWidget* parent) : QDialog(parent), mFs(fs) {
  setObjectName(QStringLiteral("LogWindow"));
  setWindowTitle(ToQ(GLS("Log Window")));
  auto* layout = new QVBoxLayout(this);
  mView = new QTextEdit(this);
  mView->setReadOnly(true);
  mView->setLineWrapMode(QTextEdit::NoWrap);
  mView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  layout->addWidget(mView, 1);
  auto* buttons = new QHBoxLayout;
  auto* open = new QPushButton(ToQ(GLS("Open Log File…")), this);
  auto* previous = new QPushButton(ToQ(GLS("Previous Error")), this);
  previous->setObjectName(QStringLiteral("previousError"));
  auto* next = new QPushButton(ToQ(GLS("Next Error")), this);
  next->setObjectName(QStringLiteral("nextError"));
  connect(open, &QPushButton::clicked, this, &LogWindow::OpenLogFile);
  connect(previous, &QPushButton::clicked, this, [this] { FindError(true); });
  connect(next, &QPushButton::clicked, this, [this] { FindError(false); });
  buttons->addWidget(open);
  buttons->addStretch(1);
  buttons->addWidget(previous);
  buttons->addWidget(next);
  layout->addLayout(buttons);
  resize(760, 520);
}

bool LogWindow::Fill(const std::string& path, const std::string& lastRunLog) {
  mLastRunLog = lastRunLog;
  const LogWindowContent content = FillLogWindow(mFs, path, lastRunLog);
  if (content.source == LogWindowSource::kCannotOpen) {
    ShowAlert(this, WarningAlert(content.alert));
    return false;
  }
  if (!content.ok()) return false;
  mText = content.text;
  mView->setPlainText(Shown(mText));
  setWindowTitle(ToQ(content.title));
  return true;
}

void LogWindow::FindError(bool previous) {
  const QTextCursor cursor = mView->textCursor();
  const QString shown = mView->toPlainText();
  const std::size_t start = BytesBefore(shown, cursor.selectionStart());
  const std::size_t length = BytesBefore(shown, cursor.selectionEnd()) - start;
  const std::optional<std::size_t> found = LogFindError(mText, start, length, previous);
  if (!found) {
    QApplication::beep();
    return;
  }
  QTextCursor select(mView->document());
  select.setPosition(PositionOf(mText, *found));
  select.setPosition(PositionOf(mText, *found + kLogErrorMarker.size()), QTextCursor::KeepAnchor);
  mView->setTextCursor(select);
  mView->ensureCursorVisible();
}

void LogWindow::OpenLogFile() {
  const QString path = QFileDialog::getOpenFileName(this, QString(), QString(),
                                                    ToQ(GLS("Log files")) + QStringLiteral(" (MGLog_*)"));
  if (!path.isEmpty()) Fill(FromQ(path), mLastRunLog);
}

}  // namespace marigold
