// The error path: which case the prompt takes, what it shows, and what its answer does to the run;
// and what an error leaves in the detailed log and the counters.
#include "engine/error_path.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/run_harness.h"

namespace marigold::run_test {
namespace {

struct ErrorCase {
  const char* name;
  int forceToCase;
  int executedBy;
  std::int64_t onError;  // the preference
  int answer;            // button pressed when asked
  bool wantResult;
  std::vector<std::string> wantButtons;  // empty: nothing shown
  const char* wantTextEnd;
  bool wantStopPressed;
};

class ManageTheError : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(ManageTheError, TakesItsCaseAndActsOnTheAnswer) {
  const ErrorCase& c = GetParam();
  RunState state;
  state.mIsCopying = true;
  state.mExecutedBy = c.executedBy;
  ScriptedProxy proxy;
  proxy.alertAnswers = {c.answer};
  PlistDict prefs{{"prefOnError", c.onError}};
  ErrorPath errors(state, proxy, prefs);

  const bool result = errors.ManageTheError("Can't copy the file", c.forceToCase);

  EXPECT_EQ(result, c.wantResult);
  EXPECT_EQ(state.IsRunOn(), c.wantResult);
  EXPECT_EQ(state.mUserPressedStop, c.wantStopPressed);
  if (c.wantButtons.empty()) {
    EXPECT_TRUE(proxy.alerts.empty());
    return;
  }
  ASSERT_EQ(proxy.alerts.size(), 1u);
  EXPECT_EQ(proxy.alerts[0].style,
            c.wantButtons.size() == 2 ? AlertRequest::Style::Critical : AlertRequest::Style::Warning);
  EXPECT_EQ(proxy.alerts[0].title, "Warning:");
  EXPECT_EQ(proxy.alerts[0].buttons, c.wantButtons);
  EXPECT_EQ(proxy.alerts[0].text, std::string("Can't copy the file.\r") + c.wantTextEnd);
}

const std::vector<std::string> kAsk{"Continue", "Stop"};
const std::vector<std::string> kOk{"OK"};

INSTANTIATE_TEST_SUITE_P(
    ErrorPath, ManageTheError,
    ::testing::Values(
        ErrorCase{"UserAskedContinues", 0, kExecutedByUser, 3, 0, true, kAsk, "Would you skip and continue?", false},
        ErrorCase{"UserAskedStops", 0, kExecutedByUser, 3, 1, false, kAsk, "Would you skip and continue?", true},
        ErrorCase{"UserGoesOnSilently", 0, kExecutedByUser, 2, 0, true, {}, "", false},
        ErrorCase{"UserToldItStopped", 0, kExecutedByUser, 1, 0, false, kOk, "The process stopped.", false},
        ErrorCase{"TimerNeverAsks", 0, kExecutedByTimer, 3, 1, true, {}, "", false},
        ErrorCase{"ForcedCaseWinsOverThePreference", 1, kExecutedByUser, 2, 0, false, kOk, "The process stopped.",
                  false},
        ErrorCase{"ForcedAskEvenForATimer", 3, kExecutedByTimer, 2, 1, false, kAsk, "Would you skip and continue?",
                  true},
        ErrorCase{"SyncAndQuitNeverAsks", 0, kExecutedBySyncAndQuit, 1, 0, true, {}, "", false},
        // A case outside 1..3 (a preference holding a value the program never writes) stops the
        // run without showing anything.
        ErrorCase{"UnknownForcedCaseStopsSilently", 4, kExecutedByUser, 3, 0, false, {}, "", false},
        ErrorCase{"NegativeForcedCaseStopsSilently", -1, kExecutedByUser, 3, 0, false, {}, "", false},
        ErrorCase{"UnknownPreferenceStopsSilently", 0, kExecutedByUser, 4, 0, false, {}, "", false},
        ErrorCase{"PreferenceZeroStopsSilently", 0, kExecutedByUser, 0, 0, false, {}, "", false}),
    [](const auto& info) { return std::string(info.param.name); });

// AddErrQuickly records an item's error and asks only a run that someone watches.
struct QuickCase {
  const char* name;
  int executedBy;
  int forceToCase;
  std::int64_t onError;  // the preference
  int button;            // pressed when asked
  bool wantGoOn;
  bool wantAsked;
  bool wantStopPressed;
};

class AddErrQuickly : public ::testing::TestWithParam<QuickCase> {};

TEST_P(AddErrQuickly, RecordsTheErrorAndAsksOnlyAWatchedRun) {
  const QuickCase& c = GetParam();
  RunState state;
  state.mIsCopying = true;
  state.mExecutedBy = c.executedBy;
  state.gMakeErrorsLog = true;
  ScriptedProxy proxy;
  proxy.alertAnswers = {c.button};
  const PlistDict prefs{{"prefOnError", c.onError}};
  ErrorPath errors(state, proxy, prefs);
  errors.SetErrMsg({"Can't delete the file", " \"", "/b/f.txt", "\""});

  EXPECT_EQ(errors.AddErrQuickly(c.forceToCase), c.wantGoOn);

  EXPECT_EQ(state.gDetailedLogText, "\xE2\x88\x9A Can't delete the file \"/b/f.txt\"\r");
  EXPECT_EQ(state.gTotError, 1);
  EXPECT_EQ(state.IsRunOn(), c.wantGoOn);
  EXPECT_EQ(state.mUserPressedStop, c.wantStopPressed);
  EXPECT_EQ(proxy.alerts.size(), c.wantAsked ? 1u : 0u);
  // A watched run hears every error, asked about or not.
  const std::vector<std::string> events = proxy.Events();
  EXPECT_EQ(std::count(events.begin(), events.end(), "beep"), c.executedBy == kExecutedByUser ? 1 : 0);
  if (c.wantAsked) {
    EXPECT_EQ(proxy.alerts[0].text.rfind("Can't delete the file \"/b/f.txt\".\r", 0), 0u) << proxy.alerts[0].text;
  }
}

INSTANTIATE_TEST_SUITE_P(
    ErrorPath, AddErrQuickly,
    ::testing::Values(
        // Nobody watches: the run goes on whatever the case asks for.
        QuickCase{"TimerRunGoesOnEvenWhenForcedToAsk", kExecutedByTimer, 3, 3, 1, true, false, false},
        QuickCase{"SyncAndQuitGoesOnEvenWhenForcedToStop", kExecutedBySyncAndQuit, 1, 3, 0, true, false, false},
        QuickCase{"UserStopsInThePrompt", kExecutedByUser, 3, 2, 1, false, true, true},
        QuickCase{"UserContinuesInThePrompt", kExecutedByUser, 3, 2, 0, true, true, false},
        QuickCase{"UserRunFollowsThePreference", kExecutedByUser, 0, 1, 0, false, true, false},
        QuickCase{"UserRunToldNothingWhenThePreferenceGoesOn", kExecutedByUser, 0, 2, 0, true, false, false}),
    [](const auto& info) { return std::string(info.param.name); });

struct LogKindCase {
  const char* name;
  bool detailed;
  bool errorsOnly;
  const char* wantLog;
};

class ErrorLogLines : public ::testing::TestWithParam<LogKindCase> {};

TEST_P(ErrorLogLines, FollowTheLogKind) {
  const LogKindCase& c = GetParam();
  RunState state;
  state.mIsCopying = true;
  state.mExecutedBy = kExecutedByTimer;
  state.gMakeDetailedLog = c.detailed;
  state.gMakeErrorsLog = c.errorsOnly;
  ScriptedProxy proxy;
  PlistDict prefs;
  ErrorPath errors(state, proxy, prefs);
  std::vector<std::string> observed;
  errors.SetErrorObserver([&](const std::string& message) { observed.push_back(message); });

  errors.AppendDetailedLine("Copied file \"/a\"");
  errors.AppendDetailedLine("Created folder \"/b\"\r");
  EXPECT_TRUE(errors.RecordItemError({"Can't find the source item", " \"", "/a", "\""}));
  errors.SetErrMsg({"second"});
  EXPECT_TRUE(errors.AddErrQuickly(0));

  EXPECT_EQ(state.gDetailedLogText, c.wantLog);
  EXPECT_EQ(state.gTotError, 2);
  EXPECT_EQ(observed, (std::vector<std::string>{"Can't find the source item \"/a\"", "second"}));
  EXPECT_TRUE(proxy.alerts.empty());
}

INSTANTIATE_TEST_SUITE_P(
    ErrorPath, ErrorLogLines,
    ::testing::Values(LogKindCase{"Detailed", true, false,
                                  "Copied file \"/a\"\rCreated folder \"/b\"\r"
                                  "\xE2\x88\x9A Can't find the source item \"/a\"\r\xE2\x88\x9A second\r"},
                      LogKindCase{"ErrorsOnly", false, true,
                                  "\xE2\x88\x9A Can't find the source item \"/a\"\r\xE2\x88\x9A second\r"},
                      LogKindCase{"SummaryOnly", false, false, ""}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold::run_test
