// AddErrQuickly, the error path's way of recording an item's error, asks only a run that someone
// watches.
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

}  // namespace
}  // namespace marigold::conflicts_test
