// File-system steps of start-up: making folders with their missing parents, carrying the previous
// major version's support folder over, and settling the exact-sync index folder.
#pragma once

#include <sys/types.h>

#include <string>

#include "app/app_paths.h"
#include "platform/system_log.h"

namespace marigold {

// Creates `path` and every missing parent, each new folder with `mode` (less the umask). True
// when `path` is a folder afterwards (also when it already was). Follows symbolic links.
bool CreateFolderWithIntermediates(const std::string& path, mode_t mode, std::string* error = nullptr);

// Copies the folder `from` to the new path `to` with its whole content, keeping each item's mode
// and modification time; symbolic links are copied as links, other special files are skipped.
// `to` must not exist. On failure nothing is left at `to`, and `error` says why.
bool CopyFolderKeepingModes(const std::string& from, const std::string& to, std::string* error = nullptr);

// When the support folder is missing and the previous major version's folder exists, copies the
// previous one over (a failure is logged to `log` and ignored); then creates the support folder. False when
// the support folder does not exist afterwards.
bool PrepareSupportFolder(const AppPaths& paths, SystemLog& log);

// The exact-sync index folder: anything that is not a folder at its path is deleted, and when
// the folder is missing the previous version's index folder is moved there. Failures are logged
// and ignored.
void PrepareIndexFolder(const AppPaths& paths, SystemLog& log);

}  // namespace marigold
