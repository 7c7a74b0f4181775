// Alerts and file panels as the desktop shows them: every question the library composes becomes
// a modal message box over the window that asked, and the button pressed goes back by index.
#pragma once

#include <QString>
#include <string>

#include "app/app_prompts.h"
#include "util/alert_request.h"

class QWidget;

namespace marigold {

inline QString ToQ(const std::string& text) { return QString::fromStdString(text); }
inline std::string FromQ(const QString& text) { return text.toStdString(); }
// The library keeps line breaks as "\r"; widgets want "\n".
QString DisplayText(const std::string& text);

// Shows `request` modally over `parent`; the index of the button pressed (0 = the default).
// Closing the box with Escape answers the last button when there are several (the cancel).
int ShowAlert(QWidget* parent, const AlertRequest& request);

class DesktopPrompts : public AppPrompts {
 public:
  explicit DesktopPrompts(QWidget* parent = nullptr) : mParent(parent) {}
  void SetParent(QWidget* parent) { mParent = parent; }

  int Alert(const AlertRequest& request) override { return ShowAlert(mParent, request); }
  std::optional<std::string> SavePanel(const std::string& suggestedName, const std::string& extension) override;
  std::optional<std::string> OpenPanel(const std::string& extension) override;

 private:
  QWidget* mParent;
};

}  // namespace marigold
