#include "support/scripted_proxy.h"

namespace marigold {
namespace {

int Next(std::deque<int>& answers, int fallback) {
  if (answers.empty()) return fallback;
  const int answer = answers.front();
  answers.pop_front();
  return answer;
}

}  // namespace

int ScriptedProxy::Alert(const AlertRequest& request) {
  std::lock_guard<std::mutex> lock(mMutex);
  alerts.push_back(request);
  return Next(alertAnswers, 0);
}

int ScriptedProxy::AskReplace(const ReplaceRequest& request) {
  std::lock_guard<std::mutex> lock(mMutex);
  asked.push_back(request);
  return Next(replaceAnswers, kReplaceResultSkip);
}

bool ScriptedProxy::ShowPreview(PreviewEditor&) {
  std::lock_guard<std::mutex> lock(mMutex);
  ++previews;
  return previewAnswer;
}

void ScriptedProxy::SetTaskComment(const std::string& text) {
  std::lock_guard<std::mutex> lock(mMutex);
  comments.push_back(text);
}

void ScriptedProxy::ShowIndeterminateProgress() {
  std::lock_guard<std::mutex> lock(mMutex);
  ++indeterminate;
}

void ScriptedProxy::UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) {
  std::lock_guard<std::mutex> lock(mMutex);
  mItemsToDo.emplace_back(itemsToDo, itemsTotal);
}

void ScriptedProxy::UpdateBytesCopied(std::uint64_t, std::uint64_t total) {
  {
    std::lock_guard<std::mutex> lock(mMutex);
    ++bytesUpdates;
    lastBytesTotal = total;
  }
  // Outside the lock: the hook may change the disk or ask the proxy again.
  if (onBytes) onBytes();
}

std::vector<std::string> ScriptedProxy::Events() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mEvents;
}

std::vector<std::pair<std::int64_t, std::int64_t>> ScriptedProxy::ItemsToDo() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mItemsToDo;
}

std::vector<int> ScriptedProxy::Conflicts() const {
  std::lock_guard<std::mutex> lock(mMutex);
  std::vector<int> codes;
  for (const ReplaceRequest& request : asked) codes.push_back(request.conflict);
  return codes;
}

void ScriptedProxy::Note(std::string event) {
  std::lock_guard<std::mutex> lock(mMutex);
  mEvents.push_back(std::move(event));
}

}  // namespace marigold
