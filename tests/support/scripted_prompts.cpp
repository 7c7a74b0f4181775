#include "support/scripted_prompts.h"

namespace marigold {

int ScriptedPrompts::Alert(const AlertRequest& request) {
  mAlerts.push_back(request);
  if (mAlertAnswers.empty()) return 0;
  const int answer = mAlertAnswers.front();
  mAlertAnswers.pop_front();
  return answer;
}

std::optional<std::string> ScriptedPrompts::SavePanel(const std::string& suggestedName,
                                                      const std::string& /*extension*/) {
  mSavePanelNames.push_back(suggestedName);
  if (mSavePaths.empty()) return std::nullopt;
  std::optional<std::string> answer = std::move(mSavePaths.front());
  mSavePaths.pop_front();
  return answer;
}

std::optional<std::string> ScriptedPrompts::OpenPanel(const std::string& /*extension*/) {
  ++mOpenPanelCount;
  if (mOpenPaths.empty()) return std::nullopt;
  std::optional<std::string> answer = std::move(mOpenPaths.front());
  mOpenPaths.pop_front();
  return answer;
}

}  // namespace marigold
