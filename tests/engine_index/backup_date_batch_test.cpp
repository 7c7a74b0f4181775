// Leaves dated on helper threads: every path added is dated once Finish returns, across several
// batches, and a file system that allows no concurrent calls is written on the caller's thread.
#include <gtest/gtest.h>

#include "engine/backup_date_batch.h"
#include "support/fault_file_system.h"
#include "platform/linux_file_system.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold {
namespace {

constexpr std::int64_t kDate = 1'700'000'000;

TEST(BackupDateBatch, DatesEveryPathAcrossSeveralBatches) {
  TempFolder temp;
  trees::Tree tree;
  for (int i = 0; i < 9000; ++i) tree["f" + std::to_string(i)] = "";
  trees::Build(temp.Join("many"), tree);
  LinuxFileSystem fs;
  {
    BackupDateBatch dates(fs, kDate);
    for (const auto& [name, content] : tree) dates.Add(temp.Join("many/" + name));
    dates.Finish();
    for (const auto& [name, content] : tree) ASSERT_EQ(trees::BackupDate(temp.Join("many/" + name)), kDate) << name;
  }
}

TEST(BackupDateBatch, AFileSystemWithoutConcurrentCallsIsWrittenAtOnce) {
  TempFolder temp;
  trees::Build(temp.Join("one"), {{"a", ""}});
  LinuxFileSystem real;
  FaultFileSystem fs(real);  // it keeps a record of calls, so it allows no concurrent ones
  BackupDateBatch dates(fs, kDate);
  dates.Add(temp.Join("one/a"));
  // Written before Finish, on this thread.
  EXPECT_EQ(fs.CountCalls(FsOperation::kSetBackupDate), 1);
  EXPECT_EQ(trees::BackupDate(temp.Join("one/a")), kDate);
}

}  // namespace
}  // namespace marigold
