// An exact task whose one root is empty — as a mount point looks when its volume is not mounted —
// never deletes the other side without a person confirming it.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "support/run_harness.h"

namespace marigold::run_test {
namespace {

const trees::Tree kBackup = {{"photos/", ""}, {"photos/a.jpg", "A"}, {"notes.txt", "n"}};

class EmptyRoot : public ::testing::Test {
 protected:
  void SetUp() override {
    ::mkdir(h.A().c_str(), 0755);
    trees::Build(h.B(), kBackup);
    h.document = MakeDocument({{h.A(), h.B(), /*task=*/2, /*exact=*/true}});
  }
  RunHarness h;
};

TEST_F(EmptyRoot, AnUnattendedRunSkipsTheTaskCountsAnErrorAndRecordsNoDates) {
  RunDriver& run = h.Run(0, kExecutedByCommandLine);

  EXPECT_EQ(trees::Read(h.B()), kBackup);
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 1);
  EXPECT_NE(h.Task(0, 0).GetString("gDetailedLogText").find("is empty"), std::string::npos);
  EXPECT_FALSE(trees::BackupDate(h.A()).has_value());
  EXPECT_FALSE(trees::BackupDate(h.B()).has_value());
  EXPECT_TRUE(h.services.indexRecords.empty());
  EXPECT_TRUE(h.proxy.alerts.empty());
  EXPECT_FALSE(run.state().mUserPressedStop);
}

TEST_F(EmptyRoot, StopIsTheDefaultAnswerAndDeletesNothing) {
  RunDriver& run = h.Run(0, kExecutedByUser);

  ASSERT_EQ(h.proxy.alerts.size(), 1u);
  EXPECT_EQ(h.proxy.alerts[0].buttons.front(), "Stop");
  EXPECT_NE(h.proxy.alerts[0].text.find(h.A()), std::string::npos);
  EXPECT_EQ(trees::Read(h.B()), kBackup);
  EXPECT_TRUE(run.state().mUserPressedStop);
  EXPECT_FALSE(trees::BackupDate(h.B()).has_value());
}

TEST_F(EmptyRoot, ContinueCarriesOutTheDeletions) {
  h.proxy.alertAnswers = {1};
  h.Run(0, kExecutedByUser);

  EXPECT_TRUE(trees::Read(h.B()).empty());
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 0);
}

TEST_F(EmptyRoot, APlainBackupAndAnEmptyDestinationAreNoCauseForAlarm) {
  h.document = MakeDocument({{h.A(), h.B(), /*task=*/2, /*exact=*/false}});
  h.Run(0, kExecutedByCommandLine);
  EXPECT_EQ(trees::Read(h.B()), kBackup);
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 0);

  // The other way round nothing is deleted, only copied: an empty destination is a first backup.
  RunHarness first;
  trees::Build(first.A(), kBackup);
  ::mkdir(first.B().c_str(), 0755);
  first.document = MakeDocument({{first.A(), first.B(), 2, true}});
  first.Run(0, kExecutedByCommandLine);
  EXPECT_EQ(trees::Read(first.B()), kBackup);
  EXPECT_EQ(first.Task(0, 0).GetInt("gTotError"), 0);
}

}  // namespace
}  // namespace marigold::run_test
