// The error path's answers that decide whether a run goes on: the cases no preference selects,
// and AddErrQuickly, which asks only a run that someone watches.
#include <gtest/gtest.h>

#include "conflict_harness.h"
#include "engine/error_path.h"

namespace marigold::conflicts_test {
namespace {

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
  AnsweringProxy proxy;
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
  EXPECT_EQ(proxy.beeps, c.executedBy == kExecutedByUser ? 1 : 0);
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

// A case outside 1..3 (a preference holding a value the program never writes) stops the run
// without showing anything; a sync-and-quit run, with nobody there, always goes on.
TEST(ManageTheError, UnknownCasesStopSilentlyAndUnwatchedRunsGoOn) {
  const std::pair<int, std::int64_t> kCaseAndPreference[] = {{4, 3}, {-1, 3}, {0, 4}, {0, 0}};
  for (const auto& [forceToCase, onError] : kCaseAndPreference) {
    RunState state;
    state.mIsCopying = true;
    state.mExecutedBy = kExecutedByUser;
    AnsweringProxy proxy;
    const PlistDict prefs{{"prefOnError", onError}};
    ErrorPath errors(state, proxy, prefs);
    SCOPED_TRACE(std::to_string(forceToCase) + " / " + std::to_string(onError));
    EXPECT_FALSE(errors.ManageTheError("Can't copy", forceToCase));
    EXPECT_FALSE(state.IsRunOn());
    EXPECT_FALSE(state.mUserPressedStop);
    EXPECT_TRUE(proxy.alerts.empty());
  }
  RunState state;
  state.mIsCopying = true;
  state.mExecutedBy = kExecutedBySyncAndQuit;
  AnsweringProxy proxy;
  const PlistDict prefs{{"prefOnError", 1}};
  ErrorPath errors(state, proxy, prefs);
  EXPECT_TRUE(errors.ManageTheError("Can't copy", 0));
  EXPECT_TRUE(proxy.alerts.empty());
}

TEST(ManageTheError, TheQuestionIsACriticalAlert) {
  RunState state;
  state.mIsCopying = true;
  AnsweringProxy proxy;
  const PlistDict prefs;
  ErrorPath errors(state, proxy, prefs);
  errors.ManageTheError("Can't copy", 3);
  errors.ManageTheError("Can't copy", 1);
  ASSERT_EQ(proxy.alerts.size(), 2u);
  EXPECT_EQ(proxy.alerts[0].style, AlertRequest::Style::Critical);
  EXPECT_EQ(proxy.alerts[0].buttons, (std::vector<std::string>{"Continue", "Stop"}));
  EXPECT_EQ(proxy.alerts[1].buttons, (std::vector<std::string>{"OK"}));
}

}  // namespace
}  // namespace marigold::conflicts_test
