// The names an exact-sync index recorded for one side, loaded for the scan. A million-item tree
// must stay small and answer "is this path in it" with one hash lookup per path component, so
// the tree is kept as one array of nodes (parent, name, folder or leaf), one arena of name bytes
// and one open-addressing table keyed by (parent, name), not as nested dictionaries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marigold {

class ExactIndexTree {
 public:
  using NodeId = std::uint32_t;
  // The tree's own dictionary, whose keys are the names of side roots.
  static constexpr NodeId kTop = 0;
  static constexpr NodeId kNone = UINT32_MAX;

  ExactIndexTree();

  // Records `name` inside the folder `parent`. A name already there keeps its id and takes the
  // new kind (the last of two equal keys wins, as in a dictionary). kNone when the tree is full
  // (4 thousand million items).
  NodeId Add(NodeId parent, std::string_view name, bool isFolder);
  // The item named `name` inside `parent`, or kNone.
  NodeId Find(NodeId parent, std::string_view name) const;
  bool IsFolder(NodeId id) const { return mNodes[id].isFolder; }
  // The names recorded directly inside `parent`, in the order they were added. Walks every node:
  // for an occasional question, not for the scan.
  std::vector<std::string> ChildNames(NodeId parent) const;
  // Items recorded, the top excluded.
  std::size_t size() const { return mNodes.size() - 1; }
  // Bytes the tree holds in memory.
  std::size_t MemoryBytes() const;

 private:
  struct Node {
    std::uint64_t nameOffset;
    std::uint32_t parent;
    std::uint32_t nameLength : 31;
    std::uint32_t isFolder : 1;
  };
  std::string_view Name(const Node& node) const { return {mNames.data() + node.nameOffset, node.nameLength}; }
  static std::size_t Hash(NodeId parent, std::string_view name);
  std::size_t SlotOf(NodeId parent, std::string_view name) const;
  void Grow();

  std::vector<Node> mNodes;
  std::string mNames;
  std::vector<NodeId> mSlots;  // node ids; kNone marks a free slot
};

}  // namespace marigold
