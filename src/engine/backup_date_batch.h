// Dating a leaf is one extended-attribute write, and the exact-sync index dates every leaf of both
// trees: on a million items those writes cost more than the walk itself. They do not depend on
// each other, so they go to helper threads in batches while the walk goes on.
#pragma once

#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace marigold {

class BackupDateBatch {
 public:
  // Every path added gets `unixSeconds` as its backup date. A file system that allows no
  // concurrent calls is written on the caller's thread, item by item.
  BackupDateBatch(FileSystem& fs, std::int64_t unixSeconds);
  ~BackupDateBatch();
  BackupDateBatch(const BackupDateBatch&) = delete;
  BackupDateBatch& operator=(const BackupDateBatch&) = delete;

  void Add(std::string path);
  // Returns once every date is written. Failures are not reported: a volume that keeps no backup
  // dates refuses them, and the scan then reads "no date", which is what the rules expect.
  void Finish();

 private:
  void Dispatch();

  FileSystem& mFs;
  std::int64_t mDate;
  bool mConcurrent;
  std::vector<std::string> mPending;
  std::vector<std::future<void>> mInFlight;
};

}  // namespace marigold
