// The one path every failure of a run takes: the message is built (SetErrMsg), written to the
// detailed log when one is kept, counted in the task's gTotError, and handed to ManageTheError,
// whose answer decides whether the run goes on. Runs on the worker thread.
#pragma once

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
  // asks ManageTheError with `forceToCase`. True to go on.
  bool AddErrQuickly(int forceToCase);
  // The error prompt: case 3 asks Continue/Stop, 2 goes on silently, 1 tells that the process
  // stopped; 0 means the preference prefOnError for a user run and 2 otherwise. A false answer
  // clears mIsCopying (and Stop sets mUserPressedStop).
  bool ManageTheError(const std::string& message, int forceToCase);
  // The executor's and scan's item failure: SetErrMsg(parts), then the log line, gTotError + 1
  // and ManageTheError(mErrString, 0). True to go on.
  bool RecordItemError(std::initializer_list<std::string_view> parts);
  // Appends a line to the detailed log when a detailed log is kept (not for errors-only logs).
  void AppendDetailedLine(const std::string& line);

 private:
  RunState& mState;
  AppkitProxy& mProxy;
  const PlistDict& mPreferences;
};

}  // namespace marigold
