#include "app/support_folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "util/temporary_names.h"

namespace marigold {
namespace {

bool Fail(std::string* error, const std::string& what, const std::string& path) {
  if (error) *error = what + " \"" + path + "\": " + std::strerror(errno);
  return false;
}

bool IsFolder(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool CopyFile(const std::string& from, const std::string& to, const struct stat& st,
              std::string* error) {
  int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (in < 0) return Fail(error, "cannot open", from);
  int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (out < 0) {
    Fail(error, "cannot create", to);
    ::close(in);
    return false;
  }
  std::vector<char> buffer(1 << 16);
  bool ok = true;
  for (;;) {
    ssize_t n = ::read(in, buffer.data(), buffer.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      ok = Fail(error, "cannot read", from);
      break;
    }
    if (n == 0) break;
    for (ssize_t done = 0; done < n;) {
      ssize_t w = ::write(out, buffer.data() + done, static_cast<std::size_t>(n - done));
      if (w < 0 && errno == EINTR) continue;
      if (w < 0) {
        ok = Fail(error, "cannot write", to);
        break;
      }
      done += w;
    }
    if (!ok) break;
  }
  if (ok && ::fchmod(out, st.st_mode & 07777) != 0) ok = Fail(error, "cannot set the mode of", to);
  if (ok) {
    timespec times[2] = {st.st_atim, st.st_mtim};
    ::futimens(out, times);  // times are kept when possible; a refusal does not fail the copy
  }
  if (::close(out) != 0 && ok) ok = Fail(error, "cannot write", to);
  ::close(in);
  return ok;
}

bool CopyTree(const std::string& from, const std::string& to, std::string* error) {
  struct stat st {};
  if (::lstat(from.c_str(), &st) != 0) return Fail(error, "cannot read", from);
  if (S_ISLNK(st.st_mode)) {
    std::vector<char> target(static_cast<std::size_t>(st.st_size > 0 ? st.st_size : 255) + 1);
    ssize_t n = ::readlink(from.c_str(), target.data(), target.size());
    if (n < 0 || static_cast<std::size_t>(n) >= target.size()) return Fail(error, "cannot read the link", from);
    if (::symlink(std::string(target.data(), static_cast<std::size_t>(n)).c_str(), to.c_str()) != 0)
      return Fail(error, "cannot create the link", to);
    return true;
  }
  if (S_ISREG(st.st_mode)) return CopyFile(from, to, st, error);
  if (!S_ISDIR(st.st_mode)) return true;  // sockets, pipes and devices have no place here

  // Owner rights first, so that the content can be written even below a read-only folder.
  if (::mkdir(to.c_str(), 0700) != 0) return Fail(error, "cannot create the folder", to);
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(from.c_str()), ::closedir);
  if (!dir) return Fail(error, "cannot list", from);
  errno = 0;
  while (const dirent* entry = ::readdir(dir.get())) {
    std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    if (!CopyTree(JoinPath(from, name), JoinPath(to, name), error)) return false;
    errno = 0;
  }
  if (errno != 0) return Fail(error, "cannot list", from);
  if (::chmod(to.c_str(), st.st_mode & 07777) != 0) return Fail(error, "cannot set the mode of", to);
  timespec times[2] = {st.st_atim, st.st_mtim};
  ::utimensat(AT_FDCWD, to.c_str(), times, 0);
  return true;
}

void RemoveTree(const std::string& path) {
  std::error_code ignored;
  // Folders copied read-only must be opened up before their content can go.
  for (auto it = std::filesystem::recursive_directory_iterator(
           path, std::filesystem::directory_options::skip_permission_denied, ignored);
       !ignored && it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
    if (it->is_directory(ignored) && !it->is_symlink(ignored)) ::chmod(it->path().c_str(), 0700);
  }
  ::chmod(path.c_str(), 0700);
  std::filesystem::remove_all(path, ignored);
}

}  // namespace

bool CreateFolderWithIntermediates(const std::string& path, mode_t mode, std::string* error) {
  if (path.empty()) {
    errno = ENOENT;
    return Fail(error, "cannot create the folder", path);
  }
  std::size_t pos = 0;
  while (pos != std::string::npos) {
    pos = path.find('/', pos + 1);
    std::string part = path.substr(0, pos);
    if (part.empty() || IsFolder(part)) continue;
    if (::mkdir(part.c_str(), mode) != 0 && !(errno == EEXIST && IsFolder(part)))
      return Fail(error, "cannot create the folder", part);
  }
  return IsFolder(path) || Fail(error, "cannot create the folder", path);
}

bool CopyFolderKeepingModes(const std::string& from, const std::string& to, std::string* error) {
  if (!IsFolder(from)) {
    errno = ENOTDIR;
    return Fail(error, "cannot copy", from);
  }
  struct stat st {};
  if (::lstat(to.c_str(), &st) == 0) {
    errno = EEXIST;
    return Fail(error, "cannot copy to", to);
  }
  // The copy is built under a temporary name and renamed at the end, so an interrupted copy never
  // passes for a complete support folder at the next launch.
  auto slash = to.rfind('/');
  std::string parent = slash == std::string::npos ? "." : to.substr(0, slash == 0 ? 1 : slash);
  std::string temp = JoinPath(parent, MakeTemporaryName());
  if (!CopyTree(from, temp, error)) {
    RemoveTree(temp);
    return false;
  }
  if (::rename(temp.c_str(), to.c_str()) != 0) {
    Fail(error, "cannot rename the copy to", to);
    RemoveTree(temp);
    return false;
  }
  return true;
}

bool PrepareSupportFolder(const AppPaths& paths, SystemLog& log) {
  bool folder4Exists = IsFolder(paths.pathMG4AppSupp);
  if (!folder4Exists && IsFolder(paths.previousSupportFolder)) {
    std::string error;
    if (!CopyFolderKeepingModes(paths.previousSupportFolder, paths.pathMG4AppSupp, &error)) {
      log.Write(LOG_WARNING, "MG cannot copy the old support folder\r" + paths.previousSupportFolder +
                                 "\rto the folder " + paths.pathMG4AppSupp + " (" + error + ")");
    }
  }
  std::string error;
  if (!CreateFolderWithIntermediates(paths.pathMG4AppSupp, 0777, &error)) {
    log.Write(LOG_ERR, "MG cannot create the folder " + paths.pathMG4AppSupp + " - folder4Exists " +
                           (folder4Exists ? "1" : "0") + " (" + error + ")");
    return false;
  }
  return true;
}

void PrepareIndexFolder(const AppPaths& paths, SystemLog& log) {
  const std::string& index = paths.exactSyncIndexFolder;
  struct stat st {};
  if (!IsFolder(index) && ::lstat(index.c_str(), &st) == 0) {
    // A file (or a dangling link) where the index folder belongs would make every index write fail.
    if (::unlink(index.c_str()) != 0)
      log.Write(LOG_WARNING, "MG cannot delete the file " + index + " (" + std::strerror(errno) + ")");
  }
  if (IsFolder(index) || !IsFolder(paths.previousIndexFolder)) return;
  if (::rename(paths.previousIndexFolder.c_str(), index.c_str()) == 0) return;
  if (errno == EXDEV) {
    // The configuration and data folders may sit on different file systems.
    std::string error;
    if (CopyFolderKeepingModes(paths.previousIndexFolder, index, &error)) {
      RemoveTree(paths.previousIndexFolder);
      return;
    }
    log.Write(LOG_WARNING, "MG cannot move the folder " + paths.previousIndexFolder + " to " + index + " (" + error + ")");
    return;
  }
  log.Write(LOG_WARNING, "MG cannot move the folder " + paths.previousIndexFolder + " to " + index + " (" +
                             std::strerror(errno) + ")");
}

}  // namespace marigold
