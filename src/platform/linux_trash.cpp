// Moving items to the trash through GIO (the freedesktop.org trash: the home trash, or
// ".Trash-$uid" at the top of another volume). GIO refuses where no trash can exist (tmpfs,
// read-only volumes); the refusal is reported and the item stays: a trash never turns into a
// delete.
#include <gio/gio.h>
#include <limits.h>

#include <cerrno>

#include "platform/linux_file_system.h"

namespace marigold {

namespace {

int ErrnoFromGio(const GError* error) {
  if (error == nullptr || error->domain != G_IO_ERROR) return EIO;
  switch (error->code) {
    case G_IO_ERROR_NOT_FOUND: return ENOENT;
    case G_IO_ERROR_EXISTS: return EEXIST;
    case G_IO_ERROR_IS_DIRECTORY: return EISDIR;
    case G_IO_ERROR_NOT_DIRECTORY: return ENOTDIR;
    case G_IO_ERROR_NOT_EMPTY: return ENOTEMPTY;
    case G_IO_ERROR_NO_SPACE: return ENOSPC;
    case G_IO_ERROR_PERMISSION_DENIED: return EACCES;
    case G_IO_ERROR_READ_ONLY: return EROFS;
    case G_IO_ERROR_NOT_SUPPORTED: return EOPNOTSUPP;
    case G_IO_ERROR_FILENAME_TOO_LONG: return ENAMETOOLONG;
    case G_IO_ERROR_BUSY: return EBUSY;
    case G_IO_ERROR_CANCELLED: return ECANCELED;
    case G_IO_ERROR_INVALID_FILENAME: return EINVAL;
    case G_IO_ERROR_TOO_MANY_LINKS: return ELOOP;
    default: return EIO;
  }
}

}  // namespace

FsStatus LinuxFileSystem::MoveToTrash(const std::string& path) {
  constexpr const char* kOperation = "move to the trash";
  // The trash records where an item came from; a path it cannot name cannot be restored.
  if (path.size() >= PATH_MAX)
    return MakeFsError(ENAMETOOLONG, kOperation, path, FsProblem::kCannotTrash);
  GFile* file = g_file_new_for_path(path.c_str());
  GError* error = nullptr;
  gboolean trashed = g_file_trash(file, nullptr, &error);
  g_object_unref(file);
  if (trashed) return FsStatus::Success();
  int code = ErrnoFromGio(error);
  g_clear_error(&error);
  return MakeFsError(code, kOperation, path, FsProblem::kCannotTrash);
}

}  // namespace marigold
