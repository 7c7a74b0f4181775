#include "ui/alert_dialog.h"

#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace marigold {

QString DisplayText(const std::string& text) {
  QString shown = ToQ(text);
  shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return shown;
}

int ShowAlert(QWidget* parent, const AlertRequest& request) {
  QMessageBox box(parent);
  switch (request.style) {
    case AlertRequest::Style::Warning: box.setIcon(QMessageBox::Warning); break;
    case AlertRequest::Style::Critical: box.setIcon(QMessageBox::Critical); break;
    case AlertRequest::Style::Informational: box.setIcon(QMessageBox::Information); break;
  }
  box.setWindowTitle(DisplayText(request.title));
  box.setText(DisplayText(request.text));
  if (!request.informative.empty()) box.setInformativeText(DisplayText(request.informative));
  std::vector<QPushButton*> buttons;
  const std::vector<std::string> titles = request.buttons.empty() ? std::vector<std::string>{"OK"} : request.buttons;
  for (std::size_t i = 0; i < titles.size(); ++i) {
    QMessageBox::ButtonRole role = i == 0 ? QMessageBox::AcceptRole
                                   : (i + 1 == titles.size() ? QMessageBox::RejectRole : QMessageBox::ActionRole);
    buttons.push_back(box.addButton(DisplayText(titles[i]), role));
  }
  box.setDefaultButton(buttons.front());
  box.setEscapeButton(buttons.back());
  box.exec();
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    if (box.clickedButton() == buttons[i]) return static_cast<int>(i);
  }
  return static_cast<int>(buttons.size()) - 1;
}

std::optional<std::string> DesktopPrompts::SavePanel(const std::string& suggestedName, const std::string& extension) {
  const QString filter = QStringLiteral("Marigold (*.%1)").arg(ToQ(extension));
  const QString start = QDir::home().filePath(ToQ(suggestedName) + QLatin1Char('.') + ToQ(extension));
  const QString path = QFileDialog::getSaveFileName(mParent, QString(), start, filter);
  if (path.isEmpty()) return std::nullopt;
  return FromQ(path);
}

std::optional<std::string> DesktopPrompts::OpenPanel(const std::string& extension) {
  const QString filter = QStringLiteral("Marigold (*.%1)").arg(ToQ(extension));
  const QString path = QFileDialog::getOpenFileName(mParent, QString(), QDir::homePath(), filter);
  if (path.isEmpty()) return std::nullopt;
  return FromQ(path);
}

}  // namespace marigold
