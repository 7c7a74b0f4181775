#include "engine/exact_sync_index.h"

#include <syslog.h>

#include <algorithm>

#include "util/path_join.h"
#include "engine/error_path.h"
#include "engine/exact_index_main.h"
#include "engine/exact_index_names.h"
#include "engine/exact_index_writer.h"
#include "platform/plist_files.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

enum WriteFailure {
  kCannotDeleteFolder = 1,
  kCannotCreateFolder,
  kCannotCreateMain,
  kCannotUpdateMain,
  kNoUniqueName,
  kCannotAddEntry,
  kCannotWritePair,
};

// What stands at `path`, a link followed (a linked index folder is used where it points).
ItemKind KindAt(FileSystem& fs, const std::string& path) {
  FsResult<ItemAttributes> attributes = fs.GetAttributes(path);
  if (attributes && attributes.Value().kind == ItemKind::kSymlink) {
    FsResult<std::string> target = fs.ResolvePath(path);
    if (target) attributes = fs.GetAttributes(target.Value());
  }
  return attributes ? attributes.Value().kind : ItemKind::kUnknown;
}

bool IsFolderAt(FileSystem& fs, const std::string& path) { return KindAt(fs, path) == ItemKind::kFolder; }
bool IsFileAt(FileSystem& fs, const std::string& path) { return KindAt(fs, path) == ItemKind::kFile; }

bool ExistsAt(FileSystem& fs, const std::string& path) { return fs.GetAttributes(path).Ok(); }

std::vector<std::string> PathsOf(const PlistDict& record, std::string_view key) {
  std::vector<std::string> paths;
  if (const PlistArray* array = record.GetArray(key)) {
    for (const PlistValue& value : *array) {
      if (const std::string* path = value.AsString()) paths.push_back(*path);
    }
  }
  return paths;
}

std::string_view ParentPath(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return slash == 0 ? std::string_view("/") : path.substr(0, slash);
}

}  // namespace

ExactSyncIndex::ExactSyncIndex(std::string indexFolder) : mIndexFolder(std::move(indexFolder)) {}
ExactSyncIndex::~ExactSyncIndex() = default;

void ExactSyncIndex::Bind(EngineContext& context) { mContext = &context; }

void ExactSyncIndex::ReleaseTrees() {
  gExactSyncDictSrc.reset();
  gExactSyncDictDst.reset();
  mLoaded.reset();
}

// --- lookup ----------------------------------------------------------------------------------

bool ExactSyncIndex::ExactSyncFileExists(bool load) {
  RunState& s = State();
  if (load) ReleaseTrees();
  mLastExactSyncDate.reset();
  const bool exactSync = s.session.gIsExactOn && s.session.gIsSyncOn;
  PlistDict mainIndex;
  std::optional<FoundPairIndex> found =
      FindPairIndex(mContext->fs, mIndexFolder, s.gSourceFolder, s.gDestFolder, load && exactSync, &mainIndex);
  if (!found) return false;
  mLastExactSyncDate = found->file.lastExactSyncDate;
  if (!load) return true;
  if (!exactSync) {
    // A plain run of the pair forgets its index; a dry run only looks, and forgets nothing.
    if (!s.mDryRun) RemovePairIndex(found->filePath, found->entryPosition, std::move(mainIndex));
    return false;
  }

  mLoaded = std::make_unique<PairIndexFile>(std::move(found->file));
  const std::string sourceName(LastPathComponent(s.gSourceFolder));
  const std::string destName(LastPathComponent(s.gDestFolder));
  // Swapped folders look their roots up under the other side's name on purpose: the index is
  // found only when both roots bear the same name.
  const bool same = found->orientation == PairOrientation::kSame;
  const ExactIndexTree& srcTree = same ? mLoaded->treeSource : mLoaded->treeDest;
  const ExactIndexTree& dstTree = same ? mLoaded->treeDest : mLoaded->treeSource;
  const auto& srcLeaves = same ? mLoaded->rootLeavesSource : mLoaded->rootLeavesDest;
  const auto& dstLeaves = same ? mLoaded->rootLeavesDest : mLoaded->rootLeavesSource;
  const std::string& srcKey = same ? sourceName : destName;
  const std::string& dstKey = same ? destName : sourceName;
  const ExactIndexTree::NodeId srcRoot = srcTree.Find(ExactIndexTree::kTop, srcKey);
  const ExactIndexTree::NodeId dstRoot = dstTree.Find(ExactIndexTree::kTop, dstKey);
  if (srcRoot == ExactIndexTree::kNone || dstRoot == ExactIndexTree::kNone) {
    ReleaseTrees();
    return false;
  }
  // A root that is not a folder node is a damaged index: say what stands there.
  auto isFolderNode = [this](const char* which, const ExactIndexTree& tree, ExactIndexTree::NodeId root,
                             const std::map<std::string, IndexRootLeaf>& leaves, const std::string& key) {
    if (tree.IsFolder(root)) return true;
    const auto leaf = leaves.find(key);
    mContext->systemLog.Write(LOG_ERR, std::string("!!!Error: ") + which + " className is " +
                                           (leaf == leaves.end() ? "unknown" : leaf->second.className) +
                                           "\rContent: " + (leaf == leaves.end() ? "" : leaf->second.content));
    return false;
  };
  const bool srcUsable = isFolderNode("gExactSyncDictSrc", srcTree, srcRoot, srcLeaves, srcKey);
  const bool usable = isFolderNode("gExactSyncDictDst", dstTree, dstRoot, dstLeaves, dstKey) && srcUsable;
  if (!usable) {
    ReleaseTrees();
    return false;
  }
  gExactSyncDictSrc = LoadedSide{&srcTree, srcRoot, CountPathComponents(s.gSourceFolder)};
  gExactSyncDictDst = LoadedSide{&dstTree, dstRoot, CountPathComponents(s.gDestFolder)};
  return true;
}

bool ExactSyncIndex::RemovePairIndex(const std::string& filePath, std::size_t entryPosition, PlistDict mainIndex) {
  mContext->fs.RemoveItem(filePath);
  PlistArray* entries = mainIndex.GetArray("indexFilesList");
  if (entries == nullptr || entryPosition >= entries->size()) return false;
  entries->erase(entries->begin() + static_cast<std::ptrdiff_t>(entryPosition));
  return WriteXmlPlistFile(mContext->fs, JoinPath(mIndexFolder, std::string(kMainIndexFileName)),
                           PlistValue(std::move(mainIndex)))
      .Ok();
}

bool ExactSyncIndex::ItWasExixting(const std::string& path, int where) const {
  const std::optional<LoadedSide>& side = where == 1 ? gExactSyncDictSrc : gExactSyncDictDst;
  if (!side) return false;
  const std::vector<std::string_view> components = SplitPathComponents(path);
  const std::size_t n = components.size();
  ExactIndexTree::NodeId node = side->root;
  for (std::size_t i = side->shift; i < n; ++i) {
    node = side->tree->Find(node, components[i]);
    if (node == ExactIndexTree::kNone) return false;
    // A leaf met before the last component: a folder replaced by a file, or inside a package.
    if (!side->tree->IsFolder(node)) return i == n - 1;
  }
  return true;
}

std::vector<std::string> ExactSyncIndex::RecordedRootNames(int where) const {
  const std::optional<LoadedSide>& side = where == 1 ? gExactSyncDictSrc : gExactSyncDictDst;
  if (!side) return {};
  return side->tree->ChildNames(side->root);
}

// --- writing ---------------------------------------------------------------------------------

bool ExactSyncIndex::ReportWriteFailure(int which, const std::string& path) {
  static constexpr const char* kHeads[] = {
      "",
      "Can't delete the ExactSyncIndex folder",
      "Can't create the ExactSync Index Folder",
      "Can't create the ExactSync MainIndex File",
      "Can't update the ExactSync MainIndex File",
      "Can't find an unique name for the ExactSync Index File",
      "Can't update the ExactSync MainIndex File",
      "Can't update the ExactSync Index File",
  };
  const std::string notExact =
      ".\r" + GLS("The next Exact Sync on these two folders will not run as") + " \"" + GLS("Exact Sync") + "\"";
  std::string tail;
  if (which <= kCannotCreateFolder) {
    tail = ".\r" + GLS("Thus can't write the ExactSyncIndex file for this synchronization") + notExact;
  } else if (which == kNoUniqueName) {
    tail = notExact + ".\r" + GLS("Please empty the folder") + " \"" + mIndexFolder + "\"";
  } else {
    tail = notExact;
  }
  mContext->errors.RecordItemErrorWithTail({GLS(kHeads[which]), " \"", path, "\""}, tail);
  return false;
}

std::optional<std::string> ExactSyncIndex::PrepareIndexFile(int mode) {
  RunState& s = State();
  FileSystem& fs = mContext->fs;
  const std::string mainPath = JoinPath(mIndexFolder, std::string(kMainIndexFileName));
  // Without its folder or its main index the other pairs' files cannot be trusted: start over.
  if (!IsFolderAt(fs, mIndexFolder) || !ExistsAt(fs, mainPath) || IsFolderAt(fs, mainPath)) {
    if (ExistsAt(fs, mIndexFolder) && !fs.RemoveTree(mIndexFolder)) {
      ReportWriteFailure(kCannotDeleteFolder, mIndexFolder);
      return std::nullopt;
    }
    if (!fs.CreateFolder(mIndexFolder, 0777, false)) {
      ReportWriteFailure(kCannotCreateFolder, mIndexFolder);
      return std::nullopt;
    }
  }
  if (!ExistsAt(fs, mainPath) &&
      !WriteXmlPlistFile(fs, mainPath, PlistValue(PlistDict{{"fileVersion", kExactIndexFileVersion}}))) {
    ReportWriteFailure(kCannotCreateMain, mainPath);
    return std::nullopt;
  }

  PlistDict mainIndex = ReadPlistDictFile(fs, mainPath).value_or(PlistDict());
  if (!IsReadableIndexVersion(mainIndex.Find("fileVersion"))) {
    mainIndex.Set("fileVersion", kExactIndexFileVersion);
    mainIndex.Remove("indexFilesList");
  }
  if (mainIndex.GetArray("indexFilesList") == nullptr) {
    mainIndex.Set("indexFilesList", PlistArray());
    if (!WriteXmlPlistFile(fs, mainPath, PlistValue(mainIndex))) {
      ReportWriteFailure(kCannotUpdateMain, mainPath);
      return std::nullopt;
    }
  }

  PlistArray& entries = *mainIndex.GetArray("indexFilesList");
  for (const PlistValue& value : entries) {
    std::optional<MainIndexEntry> entry = ReadMainIndexEntry(value);
    if (!entry || !entry->fileName) continue;
    if (MatchPair(entry->source, entry->dest, s.gSourceFolder, s.gDestFolder) == PairOrientation::kNone) continue;
    std::string filePath = JoinPath(mIndexFolder, *entry->fileName);
    if (mode == 1 && IsFileAt(fs, filePath)) return std::nullopt;
    return filePath;
  }

  std::optional<std::string> name = FindUniqueIndexName(fs, mIndexFolder);
  if (!name) {
    ReportWriteFailure(kNoUniqueName, JoinPath(mIndexFolder, std::string(kPairIndexFileName)));
    return std::nullopt;
  }
  entries.emplace_back(MakeMainIndexEntry(s.gSourceFolder, s.gDestFolder, *name));
  if (!WriteXmlPlistFile(fs, mainPath, PlistValue(mainIndex))) {
    ReportWriteFailure(kCannotAddEntry, mainPath);
    return std::nullopt;
  }
  return JoinPath(mIndexFolder, *name);
}

bool ExactSyncIndex::WriteExactSyncIndex(int mode, const PlistDict& taskRecord) {
  RunState& s = State();
  if (s.mDryRun) return true;
  addToExactIndexArray = PathsOf(taskRecord, "addToExactIndexArray");
  restoreBackupDateArray = PathsOf(taskRecord, "restoreBackupDateArray");
  mAddSet = {addToExactIndexArray.begin(), addToExactIndexArray.end()};
  mRestoreSet = {restoreBackupDateArray.begin(), restoreBackupDateArray.end()};

  std::optional<std::string> filePath = PrepareIndexFile(mode);
  if (!filePath) return false;
  DisplayExactSyncToConsole();

  // The trees are walked even when the file cannot be opened: the leaves' backup dates are part
  // of the run's result, whatever becomes of the index.
  IndexXmlWriter writer;
  writer.Open(mContext->fs, *filePath, kExactIndexFileVersion);
  writer.KeyPath("absolutePathSource", s.gSourceFolder);
  writer.KeyPath("absolutePathDest", s.gDestFolder);
  writer.KeyDate("lastExactSyncDate", s.gStartSyncDateTime);
  {
    BackupDateBatch dates(mContext->fs, s.gStartSyncDateTimeUTC);
    mDates = &dates;
    writer.OpenDict("treeSource");
    MakeExactSyncIndex(s.gSourceFolder, writer, 1);
    writer.CloseDict();
    writer.OpenDict("treeDest");
    MakeExactSyncIndex(s.gDestFolder, writer, 0);
    writer.CloseDict();
    dates.Finish();
    mDates = nullptr;
  }

  restoreBackupDateArray.clear();
  addToExactIndexArray.clear();
  mRestoreSet.clear();
  mAddSet.clear();
  if (!writer.Commit()) return ReportWriteFailure(kCannotWritePair, *filePath);
  return true;
}

bool ExactSyncIndex::MakeExactSyncIndex(const std::string& folder, IndexXmlWriter& tree, int where) {
  tree.OpenFolder(LastPathComponent(folder));
  FsResult<std::vector<FolderEntry>> listed = mContext->fs.ListFolder(folder);
  std::vector<FolderEntry> entries = listed ? std::move(listed.Value()) : std::vector<FolderEntry>();
  std::vector<std::string> added;
  if (!addToExactIndexArray.empty()) AddToExactIndex(added, folder, where);

  auto record = [&](const std::string& name, bool isDir) {
    const std::string path = JoinPath(folder, name);
    if (isDir) {
      MakeExactSyncIndex(path, tree, where);
    } else {
      tree.Leaf(name);
      DateLeaf(path);
    }
  };
  for (const FolderEntry& entry : entries) record(entry.name, entry.attributes.IsReallyFolder());
  for (const std::string& name : added) {
    // An item on disk is already recorded from the listing.
    const bool listed = std::any_of(entries.begin(), entries.end(), [&](const FolderEntry& e) { return e.name == name; });
    bool isDir = false;
    if (listed || !ItExistsInSourceOrDest(JoinPath(folder, name), where, isDir)) continue;
    record(name, isDir);
  }
  tree.CloseDict();
  return true;
}

void ExactSyncIndex::DateLeaf(const std::string& path) {
  if (!mRestoreSet.empty()) {
    if (mRestoreSet.count(path) != 0) return;
  } else if (!mAddSet.empty() && mAddSet.count(path) != 0) {
    return;
  }
  // A volume that keeps no backup dates refuses them; the scan then reads "no date".
  if (mDates != nullptr) {
    mDates->Add(path);
  } else {
    mContext->fs.SetBackupDate(path, State().gStartSyncDateTimeUTC);
  }
}

bool ExactSyncIndex::ItExistsInSourceOrDest(const std::string& path, int where, bool& isDir) {
  FsResult<ItemAttributes> attributes = mContext->fs.GetAttributes(path);
  if (!attributes) {
    const RunState& s = State();
    const std::string& ownRoot = where == 1 ? s.gSourceFolder : s.gDestFolder;
    const std::string& otherRoot = where == 1 ? s.gDestFolder : s.gSourceFolder;
    const std::vector<std::string_view> components = SplitPathComponents(path);
    const std::size_t rootCount = CountPathComponents(ownRoot);
    if (rootCount > components.size()) return false;
    std::string counterpart = otherRoot;
    for (std::size_t i = rootCount; i < components.size(); ++i) counterpart = JoinPath(counterpart, std::string(components[i]));
    attributes = mContext->fs.GetAttributes(counterpart);
    if (!attributes) return false;
    restoreBackupDateArray.push_back(counterpart);
    mRestoreSet.insert(counterpart);
  }
  isDir = attributes.Value().IsReallyFolder();
  return true;
}

void ExactSyncIndex::AddToExactIndex(std::vector<std::string>& listing, const std::string& folder, int) {
  for (std::size_t i = addToExactIndexArray.size(); i-- > 0;) {
    const std::string path = addToExactIndexArray[i];
    if (ParentPath(path) != folder) continue;
    listing.emplace_back(LastPathComponent(path));
    restoreBackupDateArray.push_back(path);
    mRestoreSet.insert(path);
    mAddSet.erase(path);
    addToExactIndexArray.erase(addToExactIndexArray.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

void ExactSyncIndex::DisplayExactSyncToConsole() {
  mContext->proxy.SetTaskComment(GLS("Creating Exact Sync Index\xE2\x80\xA6"));
  mContext->proxy.ShowIndeterminateProgress();
}

}  // namespace marigold
