#include "engine/item_unlocking.h"

#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "engine/copy_executor.h"

namespace marigold {
namespace {

// Owner rights are enough for the run to act on an item it owns, without opening it to others.
constexpr std::uint32_t kOwnerRights = 0700;

bool IsWithin(const std::string& path, const std::string& folder) {
  if (path == folder) return true;
  if (folder == "/") return !path.empty() && path.front() == '/';
  return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/';
}

// `item`, then each folder holding it, up to and including `mainFolder`; empty when `item` is
// not inside `mainFolder`.
std::vector<std::string> ChainUpTo(const std::string& item, const std::string& mainFolder) {
  std::vector<std::string> chain;
  for (std::string path = item; IsWithin(path, mainFolder); path = ParentFolderOf(path)) {
    chain.push_back(path);
    if (path == mainFolder || path == "/") break;
  }
  return chain;
}

}  // namespace

bool ItemUnlocking::UnlockChain(const std::string& item, const std::string& mainFolder, int check) {
  // A dry run opens nothing, so it has nothing to put back either.
  if (mContext.state.mDryRun) return false;
  FileSystem& fs = mContext.fs;
  const std::vector<std::string> chain = ChainUpTo(item, mainFolder);
  const std::string walkFolder = check == kCheckWritable ? item : ParentFolderOf(item);
  if (mContext.state.session.gIsUnlockOn) {
    for (const std::string& path : chain) {
      auto attributes = fs.GetAttributes(path);
      if (!attributes || !attributes.Value().isLocked || !fs.SetLocked(path, false)) continue;
      AddItemDictToRestoreToPath(path, walkFolder, true, std::nullopt);
      if (UnlockCheck(item, check)) return true;
    }
  }
  for (const std::string& path : chain) {
    auto attributes = fs.GetAttributes(path);
    if (!attributes) break;
    const std::uint32_t mode = attributes.Value().mode;
    if (attributes.Value().kind == ItemKind::kSymlink || (mode & kOwnerRights) == kOwnerRights) continue;
    if (!fs.SetMode(path, mode | kOwnerRights)) continue;
    AddItemDictToRestoreToPath(path, walkFolder, false, mode);
    if (UnlockCheck(item, check)) return true;
  }
  return false;
}

bool ItemUnlocking::UnlockCheck(const std::string& path, int check) {
  FileSystem& fs = mContext.fs;
  switch (check) {
    case kCheckWritable: {
      auto attributes = fs.GetAttributes(path);
      if (!attributes) return false;
      const int mode = attributes.Value().IsFolder() ? kAccessWrite | kAccessSearch : kAccessWrite;
      return fs.CheckAccess(path, mode).Ok();
    }
    case kCheckDeletable: {
      auto attributes = fs.GetAttributes(path);
      const std::string parent = ParentFolderOf(path);
      auto parentAttributes = fs.GetAttributes(parent);
      if (!attributes || !parentAttributes || attributes.Value().isLocked) return false;
      if (!fs.CheckAccess(parent, kAccessWrite | kAccessSearch)) return false;
      // In a sticky folder (such as /tmp) only the owners of the item or folder may remove it.
      const uid_t user = ::geteuid();
      return (parentAttributes.Value().mode & S_ISVTX) == 0 || user == 0 || attributes.Value().uid == user ||
             parentAttributes.Value().uid == user;
    }
    case kCheckCreatable:
      return fs.CreateFolder(path, 0777, false).Ok();
    default:
      return false;
  }
}

void ItemUnlocking::AddItemDictToRestoreToPath(const std::string& path, const std::string& walkFolder, bool lock,
                                               std::optional<std::uint32_t> perm) {
  if (path.empty()) return;
  auto [entry, added] = mRecord.try_emplace(path, Entry{walkFolder, false, std::nullopt});
  // A path opened twice keeps what it had before the first opening.
  entry->second.lock = entry->second.lock || lock;
  if (!entry->second.perm) entry->second.perm = perm;
}

bool ItemUnlocking::Restore(const std::string& path, const Entry& entry) {
  if (mContext.state.mDryRun) return true;
  FileSystem& fs = mContext.fs;
  auto attributes = fs.GetAttributes(path);
  if (!attributes) return attributes.Error().IsMissing();
  bool done = true;
  // The mode first: a locked item refuses every change, its mode included.
  if (entry.perm) done = fs.SetMode(path, *entry.perm).Ok();
  if (entry.lock) done = fs.SetLocked(path, true).Ok() && done;
  return done;
}

bool ItemUnlocking::RestoreOriginalAttr(const std::string& pathA, const std::string& pathB) {
  const RunState& state = mContext.state;
  const bool wholeTask = pathA == state.gSourceFolder && pathB == state.gDestFolder;
  bool found = false;
  bool done = true;
  // From the deepest path up, so that a folder is shut after the items inside it.
  for (auto it = mRecord.rbegin(); it != mRecord.rend();) {
    const Entry& entry = it->second;
    if (!wholeTask && entry.walkFolder != pathA && entry.walkFolder != pathB) {
      ++it;
      continue;
    }
    found = true;
    done = Restore(it->first, entry) && done;
    it = decltype(it)(mRecord.erase(std::next(it).base()));
  }
  return found && done;
}

void ItemUnlocking::RemoveItemOKFromRestore(const std::string& path) {
  mRecord.erase(path);
  // The items inside sort between "<path>/" and "<path>0" ('0' follows '/').
  const std::string inside = path == "/" ? "/" : path + "/";
  const std::string after = inside.substr(0, inside.size() - 1) + "0";
  mRecord.erase(mRecord.lower_bound(inside), mRecord.lower_bound(after));
}

bool ItemUnlocking::UnlockWholeItem(const std::string& path) {
  if (mContext.state.mDryRun) return false;
  FileSystem& fs = mContext.fs;
  auto attributes = fs.GetAttributes(path);
  if (!attributes) return false;
  // A link has neither flags nor permissions of its own to open.
  if (attributes.Value().kind == ItemKind::kSymlink) return true;
  bool done = fs.SetLocked(path, false).Ok();
  done = fs.SetMode(path, attributes.Value().mode | kOwnerRights).Ok() && done;
  if (!attributes.Value().IsFolder()) return done;
  auto entries = fs.ListFolder(path);
  if (!entries) return false;
  for (const FolderEntry& entry : entries.Value()) done = UnlockWholeItem(ChildPath(path, entry.name)) && done;
  return done;
}

}  // namespace marigold
