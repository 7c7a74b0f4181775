// The one path every failure of a run takes: the message is built (SetErrMsg), written to the
// detailed log when one is kept, counted in the task's gTotError, and handed to ManageTheError,
// whose answer decides whether the run goes on. Runs on the worker thread.
//
// A false answer always leaves mIsCopying cleared, so every loop of the engine winds down at its
// next poll; Stop (in the error prompt or the replace prompt) also sets mUserPressedStop, which
// keeps the end of the run from writing the index and the backup dates.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "engine/engine_context.h"

namespace marigold {

class ErrorPath {
 public:
  explicit ErrorPath(RunState& state, AppkitProxy& proxy, const PlistDict& preferences);

  // mErrString = the parts joined in order.
  void SetErrMsg(std::initializer_list<std::string_view> parts);
  // Records mErrString (detailed log "√ " line, gTotError + 1) and, for an interactive run,
  // beeps and asks ManageTheError with `forceToCase`. True to go on.
  bool AddErrQuickly(int forceToCase);
  // The error prompt: case 3 asks Continue/Stop, 2 goes on silently, 1 tells that the process
  // stopped; 0 means the preference prefOnError for a user run and 2 otherwise. A false answer
  // clears mIsCopying (and Stop sets mUserPressedStop).
  bool ManageTheError(const std::string& message, int forceToCase);
  // The executor's and scan's item failure: SetErrMsg(parts), then the log line, gTotError + 1
  // and ManageTheError(mErrString, 0). True to go on.
  bool RecordItemError(std::initializer_list<std::string_view> parts);
  // As RecordItemError, but `tail` is added to the message after the detailed log line was
  // written: the log keeps the short form, the prompt shows the whole message.
  bool RecordItemErrorWithTail(std::initializer_list<std::string_view> parts, std::string_view tail);
  // Appends `line` and a "\r" (unless it already ends with one) to gDetailedLogText when a
  // detailed log is kept (not for errors-only logs).
  void AppendDetailedLine(const std::string& line);

  // The title of the run's error alerts: the localised "Warning:".
  const std::string& gErrorTitleDialog() const { return mErrorTitle; }

  // Called with every message recorded as an error (AddErrQuickly, RecordItemError), whatever
  // the log kind, on the worker thread; a front end uses it to show errors as they happen.
  void SetErrorObserver(std::function<void(const std::string&)> observer) { mObserver = std::move(observer); }

 private:
  // The "√ " line in the detailed log when a detailed or errors-only log is kept, gTotError + 1,
  // and the observer.
  void NoteError();

  RunState& mState;
  AppkitProxy& mProxy;
  const PlistDict& mPreferences;
  std::string mErrorTitle;
  std::function<void(const std::string&)> mObserver;
};

}  // namespace marigold
