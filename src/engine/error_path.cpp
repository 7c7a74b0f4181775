#include "engine/error_path.h"

#include "util/strings_table.h"

namespace marigold {
namespace {

constexpr int kOnErrorStopped = 1;
constexpr int kOnErrorContinue = 2;
constexpr int kOnErrorAsk = 3;

constexpr const char* kErrorMark = "\xE2\x88\x9A ";  // "√ "

}  // namespace

ErrorPath::ErrorPath(RunState& state, AppkitProxy& proxy, const PlistDict& preferences)
    : mState(state), mProxy(proxy), mPreferences(preferences), mErrorTitle(GLS("Warning:")) {}

void ErrorPath::SetErrMsg(std::initializer_list<std::string_view> parts) {
  std::string message;
  for (std::string_view part : parts) message.append(part);
  mState.mErrString = std::move(message);
}

void ErrorPath::NoteError() {
  if (mState.gMakeDetailedLog || mState.gMakeErrorsLog) {
    mState.gDetailedLogText.append(kErrorMark).append(mState.mErrString).push_back('\r');
  }
  ++mState.gTotError;
  if (mObserver) mObserver(mState.mErrString);
}

bool ErrorPath::AddErrQuickly(int forceToCase) {
  NoteError();
  if (mState.mExecutedBy != kExecutedByUser) return true;
  mProxy.Beep();
  return ManageTheError(mState.mErrString, forceToCase);
}

bool ErrorPath::RecordItemError(std::initializer_list<std::string_view> parts) {
  SetErrMsg(parts);
  NoteError();
  return ManageTheError(mState.mErrString, 0);
}

bool ErrorPath::RecordItemErrorWithTail(std::initializer_list<std::string_view> parts, std::string_view tail) {
  SetErrMsg(parts);
  NoteError();
  mState.mErrString.append(tail);
  return ManageTheError(mState.mErrString, 0);
}

bool ErrorPath::ManageTheError(const std::string& message, int forceToCase) {
  std::int64_t effective = forceToCase;
  if (effective == 0) {
    if (mState.mExecutedBy == kExecutedByUser) {
      const PlistValue* pref = mPreferences.Find("prefOnError");
      effective = pref ? pref->NumberOr(mState.gIsOnError) : mState.gIsOnError;
    } else {
      // Nobody is there to answer an unattended run: it always goes on.
      effective = kOnErrorContinue;
    }
  }

  bool goOn = false;
  switch (effective) {
    case kOnErrorAsk: {
      AlertRequest alert;
      alert.style = AlertRequest::Style::Critical;
      alert.title = mErrorTitle;
      alert.text = message + ".\r" + GLS("Would you skip and continue?");
      alert.buttons = {GLS("Continue"), GLS("Stop")};
      goOn = mProxy.Alert(alert) == 0;
      if (!goOn) mState.mUserPressedStop = true;
      break;
    }
    case kOnErrorContinue:
      goOn = true;
      break;
    case kOnErrorStopped: {
      AlertRequest alert;
      alert.style = AlertRequest::Style::Warning;
      alert.title = mErrorTitle;
      alert.text = message + ".\r" + GLS("The process stopped.");
      alert.buttons = {GLS("OK")};
      mProxy.Alert(alert);
      break;
    }
    default:
      break;
  }
  if (!goOn) mState.mIsCopying = false;
  return goOn;
}

void ErrorPath::AppendDetailedLine(const std::string& line) {
  if (!mState.gMakeDetailedLog) return;
  mState.gDetailedLogText.append(line);
  if (line.empty() || line.back() != '\r') mState.gDetailedLogText.push_back('\r');
}

}  // namespace marigold
