#include "engine/exact_index_reader.h"

#include <plist/plist.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

#include "engine/exact_index_names.h"
#include "engine/exact_index_xml.h"
#include "util/plist_guard.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

constexpr int kMaxForeignDepth = 1024;
constexpr std::size_t kMaxForeignNodes = 50'000'000;

// A header value as either parser saw it.
struct Scalar {
  std::string className;
  std::string text;
  std::optional<std::int64_t> number;
  std::optional<PlistDate> date;
};

void StoreHeader(PairIndexFile& file, std::string_view key, const Scalar& value) {
  if (key == "fileVersion") {
    file.fileVersion = value.number;
  } else if (key == "absolutePathSource" || key == "absolutePathDest") {
    std::optional<std::string> path;
    if (value.className == "string") path = UnescapeIndexPath(value.text);
    (key == "absolutePathSource" ? file.absolutePathSource : file.absolutePathDest) = std::move(path);
  } else if (key == "lastExactSyncDate") {
    file.lastExactSyncDate = value.date;
  }
}

bool IsHeaderKey(std::string_view key) {
  return key == "fileVersion" || key == "absolutePathSource" || key == "absolutePathDest" ||
         key == "lastExactSyncDate";
}

// --- the program's own XML, streamed ---------------------------------------------------------

class StreamedReader {
 public:
  StreamedReader(std::string_view bytes, bool withTrees) : mCursor(bytes), mWithTrees(withTrees) {}

  bool Read(PairIndexFile& file) {
    IndexXmlCursor::Tag tag;
    if (!mCursor.NextTag(tag)) return false;
    const bool inPlist = tag.name == "plist" && !tag.closing && !tag.selfClosing;
    if (inPlist && !mCursor.NextTag(tag)) return false;
    if (tag.name != "dict" || tag.closing) return false;
    if (!tag.selfClosing && !ReadTop(file)) return false;
    if (inPlist && (!mCursor.NextTag(tag) || tag.name != "plist" || !tag.closing)) return false;
    return mCursor.AtEnd();
  }

 private:
  bool ReadTop(PairIndexFile& file) {
    IndexXmlCursor::Tag tag;
    std::string key;
    for (;;) {
      if (!mCursor.NextTag(tag)) return false;
      if (tag.closing && tag.name == "dict") return true;
      if (tag.closing || tag.name != "key" || !mCursor.ReadElementText(tag, key)) return false;
      if (!mCursor.NextTag(tag) || tag.closing) return false;
      const bool isTree = key == "treeSource" || key == "treeDest";
      if (isTree && mWithTrees && tag.name == "dict") {
        const bool source = key == "treeSource";
        ExactIndexTree& tree = source ? file.treeSource : file.treeDest;
        auto& leaves = source ? file.rootLeavesSource : file.rootLeavesDest;
        tree = ExactIndexTree();
        leaves.clear();
        if (!tag.selfClosing && !ReadTree(tree, leaves)) return false;
      } else if (IsHeaderKey(key)) {
        Scalar value;
        if (!ReadScalar(tag, value)) return false;
        StoreHeader(file, key, value);
      } else if (!mCursor.SkipValue(tag)) {
        return false;
      }
    }
  }

  bool ReadScalar(const IndexXmlCursor::Tag& tag, Scalar& value) {
    value.className = tag.name == "dict" ? "dictionary" : std::string(tag.name);
    if (tag.name == "true" || tag.name == "false") {
      value.text = std::string(tag.name);
      return tag.selfClosing || mCursor.ReadElementText(tag, value.text);
    }
    if (tag.name == "dict" || tag.name == "array") {
      value.text = "(" + value.className + ")";
      return mCursor.SkipValue(tag);
    }
    if (!mCursor.ReadElementText(tag, value.text)) return false;
    if (tag.name == "integer") {
      std::int64_t number = 0;
      const char* begin = value.text.data();
      const char* end = begin + value.text.size();
      while (begin < end && (*begin == ' ' || *begin == '\n' || *begin == '\t')) ++begin;
      const auto [ptr, ec] = std::from_chars(begin, end, number);
      if (ec == std::errc()) value.number = number;
    } else if (tag.name == "real") {
      char* end = nullptr;
      const double real = std::strtod(value.text.c_str(), &end);
      if (end != value.text.c_str() && std::isfinite(real) && std::fabs(real) < 9.2e18) {
        value.number = static_cast<std::int64_t>(real);
      }
    } else if (tag.name == "date") {
      value.date = ParseIsoUtcDate(value.text);
    }
    return true;
  }

  // The tree's dictionary, iteratively: one stack entry per open folder.
  bool ReadTree(ExactIndexTree& tree, std::map<std::string, IndexRootLeaf>& leaves) {
    std::vector<ExactIndexTree::NodeId> open{ExactIndexTree::kTop};
    IndexXmlCursor::Tag tag;
    std::string key;
    std::string name;
    while (!open.empty()) {
      if (!mCursor.NextTag(tag)) return false;
      if (tag.closing && tag.name == "dict") {
        open.pop_back();
        continue;
      }
      if (tag.closing || tag.name != "key" || !mCursor.ReadElementText(tag, key)) return false;
      if (!mCursor.NextTag(tag) || tag.closing) return false;
      const bool escaped = key.size() > 1 && key.front() == '/';
      if (escaped) name = UnescapeIndexName(key);
      const std::string_view itemName = escaped ? std::string_view(name) : std::string_view(key);
      const bool isFolder = tag.name == "dict";
      const bool atTop = open.size() == 1;
      const ExactIndexTree::NodeId id = tree.Add(open.back(), itemName, isFolder);
      if (id == ExactIndexTree::kNone) return false;
      if (isFolder) {
        if (atTop) leaves.erase(std::string(itemName));
        if (!tag.selfClosing) open.push_back(id);
      } else if (atTop) {
        Scalar value;
        if (!ReadScalar(tag, value)) return false;
        leaves[std::string(itemName)] = IndexRootLeaf{value.className, value.text};
      } else if (!mCursor.SkipValue(tag)) {
        return false;
      }
    }
    return true;
  }

  IndexXmlCursor mCursor;
  bool mWithTrees;
};

// --- any other property list, through the general parser ------------------------------------

struct PlistFree {
  void operator()(plist_t node) const { plist_free(node); }
};

std::string NodeString(plist_t node) {
  std::uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  return text ? std::string(text, length) : std::string();
}

Scalar NodeScalar(plist_t node) {
  Scalar value;
  switch (plist_get_node_type(node)) {
    case PLIST_STRING:
      value.className = "string";
      value.text = NodeString(node);
      break;
    case PLIST_UINT: {
      std::uint64_t number = 0;
      plist_get_uint_val(node, &number);
      value.className = "integer";
      value.number = static_cast<std::int64_t>(number);
      value.text = std::to_string(*value.number);
      break;
    }
    case PLIST_REAL: {
      double real = 0;
      plist_get_real_val(node, &real);
      value.className = "real";
      value.text = std::to_string(real);
      if (std::isfinite(real) && std::fabs(real) < 9.2e18) value.number = static_cast<std::int64_t>(real);
      break;
    }
    case PLIST_DATE: {
      std::int32_t sec = 0, usec = 0;
      plist_get_date_val(node, &sec, &usec);
      value.className = "date";
      value.date = PlistDate{sec + usec / 1e6};
      break;
    }
    case PLIST_BOOLEAN: value.className = "boolean"; break;
    case PLIST_DATA: value.className = "data"; break;
    case PLIST_ARRAY: value.className = "array"; break;
    case PLIST_DICT: value.className = "dictionary"; break;
    default: value.className = "unknown"; break;
  }
  return value;
}

// Walks a dictionary node's items in order.
template <typename Visit>
void ForEachItem(plist_t dict, Visit&& visit) {
  plist_dict_iter it = nullptr;
  plist_dict_new_iter(dict, &it);
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(dict, it, &key, &value);
    if (value == nullptr) {
      std::free(key);
      break;
    }
    visit(std::string_view(key ? key : ""), value);
    std::free(key);
  }
  std::free(it);
}

// Depth is bounded by the shape check made before parsing.
bool CopyFolder(plist_t dict, ExactIndexTree& tree, ExactIndexTree::NodeId parent,
                std::map<std::string, IndexRootLeaf>* leaves) {
  bool ok = true;
  ForEachItem(dict, [&](std::string_view key, plist_t value) {
    if (!ok) return;
    const std::string name = UnescapeIndexName(key);
    const bool isFolder = plist_get_node_type(value) == PLIST_DICT;
    const ExactIndexTree::NodeId id = tree.Add(parent, name, isFolder);
    if (id == ExactIndexTree::kNone) {
      ok = false;
      return;
    }
    if (leaves != nullptr) {
      if (isFolder) {
        leaves->erase(name);
      } else {
        const Scalar scalar = NodeScalar(value);
        (*leaves)[name] = IndexRootLeaf{scalar.className, scalar.text};
      }
    }
    if (isFolder) ok = CopyFolder(value, tree, id, nullptr);
  });
  return ok;
}

std::optional<PairIndexFile> ParseForeign(std::string_view bytes, bool withTrees) {
  if (bytes.size() > UINT32_MAX) return std::nullopt;
  const bool binary = bytes.starts_with("bplist");
  const bool shapeOk = binary ? CheckBinaryPlistShape(bytes, kMaxForeignDepth, kMaxForeignNodes, nullptr)
                              : CheckXmlPlistShape(bytes, kMaxForeignDepth, nullptr);
  if (!shapeOk) return std::nullopt;
  plist_t raw = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &raw);
  std::unique_ptr<void, PlistFree> root(raw);
  if (!root || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
  PairIndexFile file;
  bool ok = true;
  ForEachItem(root.get(), [&](std::string_view key, plist_t value) {
    if (IsHeaderKey(key)) {
      StoreHeader(file, key, NodeScalar(value));
    } else if (withTrees && (key == "treeSource" || key == "treeDest") && plist_get_node_type(value) == PLIST_DICT) {
      const bool source = key == "treeSource";
      ExactIndexTree& tree = source ? file.treeSource : file.treeDest;
      auto& leaves = source ? file.rootLeavesSource : file.rootLeavesDest;
      tree = ExactIndexTree();
      leaves.clear();
      ok = ok && CopyFolder(value, tree, ExactIndexTree::kTop, &leaves);
    }
  });
  if (!ok) return std::nullopt;
  return file;
}

}  // namespace

std::optional<PairIndexFile> ParsePairIndex(std::string_view bytes, bool withTrees) {
  if (bytes.empty()) return std::nullopt;
  if (!bytes.starts_with("bplist")) {
    PairIndexFile file;
    if (StreamedReader(bytes, withTrees).Read(file)) return file;
    if (bytes.starts_with(kIndexXmlSignature)) return std::nullopt;
  }
  return ParseForeign(bytes, withTrees);
}

std::optional<PairIndexFile> ReadPairIndexFile(FileSystem& fs, const std::string& path, bool withTrees) {
  FsResult<FileBytes> bytes = fs.ReadFile(path, UINT64_MAX);
  if (!bytes) return std::nullopt;
  return ParsePairIndex(bytes.Value().View(), withTrees);
}

}  // namespace marigold
