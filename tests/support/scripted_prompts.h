// An AppPrompts that answers from queues a test fills, and records every question it was asked.
// When a queue is empty it answers with the default: the first button, or a cancelled panel.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "app/app_prompts.h"

namespace marigold {

class ScriptedPrompts : public AppPrompts {
 public:
  // Queues the button index the next alert returns.
  void QueueAlertAnswer(int buttonIndex) { mAlertAnswers.push_back(buttonIndex); }
  // Queues the next save panel's answer; nothing means the panel is cancelled.
  void QueueSavePath(std::optional<std::string> path) { mSavePaths.push_back(std::move(path)); }
  // Queues the next open panel's answer; nothing means the panel is cancelled.
  void QueueOpenPath(std::optional<std::string> path) { mOpenPaths.push_back(std::move(path)); }

  int Alert(const AlertRequest& request) override;
  std::optional<std::string> SavePanel(const std::string& suggestedName,
                                       const std::string& extension) override;
  std::optional<std::string> OpenPanel(const std::string& extension) override;

  // Every alert shown, in order.
  const std::vector<AlertRequest>& Alerts() const { return mAlerts; }
  // The suggested names of the save panels shown, in order.
  const std::vector<std::string>& SavePanelNames() const { return mSavePanelNames; }
  // How many open panels were shown.
  int OpenPanelCount() const { return mOpenPanelCount; }

 private:
  std::deque<int> mAlertAnswers;
  std::deque<std::optional<std::string>> mSavePaths;
  std::deque<std::optional<std::string>> mOpenPaths;
  std::vector<AlertRequest> mAlerts;
  std::vector<std::string> mSavePanelNames;
  int mOpenPanelCount = 0;
};

}  // namespace marigold
