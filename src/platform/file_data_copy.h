// Building block of LinuxFileSystem (not for the engine): moving the bytes of one file.
#pragma once

#include <string>

#include "platform/file_system.h"

namespace marigold::linux_detail {

// Copies `size` bytes of data from the open source file into the open, empty destination file:
// a clone of the extents when the volume shares them, else copy_file_range, else read and
// write; holes of the source stay holes (looked for only when `mayHaveHoles`: the file has
// fewer blocks than bytes). `alreadyCopied` is added to the progress figures (a
// folder copy counts on across its files); `progressTotal` is what progress reports as the total.
// A source shorter than `size` fails with FsProblem::kSourceChanged.
FsResult<CopyReport> CopyFileData(int sourceFd, int destFd, std::uint64_t size, bool mayHaveHoles,
                                  std::uint64_t alreadyCopied, std::uint64_t progressTotal,
                                  const CopyOptions& options, const std::string& sourcePath,
                                  const std::string& destPath);

// Whether the copy may go on: the run's flag is up and the progress callback agrees.
bool CopyMayContinue(const CopyOptions& options, std::uint64_t copied, std::uint64_t total);

}  // namespace marigold::linux_detail
