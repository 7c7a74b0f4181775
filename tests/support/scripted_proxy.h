// The console as a test sees it: answers alerts, replace prompts and the preview from a script,
// and records what a person would have been shown. Safe to call from a run's helper threads.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "engine/appkit_proxy.h"

namespace marigold {

class ScriptedProxy : public AppkitProxy {
 public:
  int Alert(const AlertRequest& request) override;
  int AskReplace(const ReplaceRequest& request) override;
  bool ShowPreview(PreviewEditor&) override;
  void RunStarted() override { Note("started"); }
  void RunEnded() override { Note("ended"); }
  void ShowMainFolders(const std::string& source, const std::string& dest) override {
    Note("folders " + source + " " + dest);
  }
  void SetTaskComment(const std::string& text) override;
  void ShowIndeterminateProgress() override;
  void UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) override;
  void UpdateBytesCopied(std::uint64_t copied, std::uint64_t total) override;
  void Beep() override { Note("beep"); }

  // The console events in order: "started", "folders <a> <b>", "beep", "ended".
  std::vector<std::string> Events() const;
  std::vector<std::pair<std::int64_t, std::int64_t>> ItemsToDo() const;
  // The conflict code of every replace prompt shown, in order.
  std::vector<int> Conflicts() const;

  // Answers, used in order; an empty queue answers the first button / Skip.
  std::deque<int> alertAnswers;
  std::deque<int> replaceAnswers;
  bool previewAnswer = true;
  std::function<void()> onBytes;  // runs while a file is being copied

  std::vector<AlertRequest> alerts;
  std::vector<ReplaceRequest> asked;
  std::vector<std::string> comments;
  int previews = 0;
  int indeterminate = 0;
  int bytesUpdates = 0;
  std::uint64_t lastBytesTotal = 0;

 private:
  void Note(std::string event);
  mutable std::mutex mMutex;
  std::vector<std::string> mEvents;
  std::vector<std::pair<std::int64_t, std::int64_t>> mItemsToDo;
};

}  // namespace marigold
