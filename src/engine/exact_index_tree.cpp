#include "engine/exact_index_tree.h"

#include <functional>

namespace marigold {

ExactIndexTree::ExactIndexTree() : mSlots(16, kNone) { mNodes.push_back(Node{0, kNone, 0, 1}); }

std::size_t ExactIndexTree::Hash(NodeId parent, std::string_view name) {
  return std::hash<std::string_view>{}(name) ^ (static_cast<std::size_t>(parent) * 0x9E3779B97F4A7C15ull);
}

// The slot holding (parent, name), or the free slot where it belongs.
std::size_t ExactIndexTree::SlotOf(NodeId parent, std::string_view name) const {
  const std::size_t mask = mSlots.size() - 1;
  std::size_t slot = Hash(parent, name) & mask;
  for (;;) {
    const NodeId id = mSlots[slot];
    if (id == kNone) return slot;
    const Node& node = mNodes[id];
    if (node.parent == parent && Name(node) == name) return slot;
    slot = (slot + 1) & mask;
  }
}

void ExactIndexTree::Grow() {
  std::vector<NodeId> old(mSlots.size() * 2, kNone);
  old.swap(mSlots);
  const std::size_t mask = mSlots.size() - 1;
  for (NodeId id : old) {
    if (id == kNone) continue;
    const Node& node = mNodes[id];
    std::size_t slot = Hash(node.parent, Name(node)) & mask;
    while (mSlots[slot] != kNone) slot = (slot + 1) & mask;
    mSlots[slot] = id;
  }
}

ExactIndexTree::NodeId ExactIndexTree::Add(NodeId parent, std::string_view name, bool isFolder) {
  if (name.size() >= (1u << 31)) return kNone;
  std::size_t slot = SlotOf(parent, name);
  if (mSlots[slot] != kNone) {
    mNodes[mSlots[slot]].isFolder = isFolder ? 1 : 0;
    return mSlots[slot];
  }
  if (mNodes.size() >= kNone - 1) return kNone;
  // Keep the table at most 70 % full so that probes stay short.
  if ((mNodes.size() + 1) * 10 > mSlots.size() * 7) {
    Grow();
    slot = SlotOf(parent, name);
  }
  const auto id = static_cast<NodeId>(mNodes.size());
  mNodes.push_back(Node{mNames.size(), parent, static_cast<std::uint32_t>(name.size()), isFolder ? 1u : 0u});
  mNames.append(name);
  mSlots[slot] = id;
  return id;
}

ExactIndexTree::NodeId ExactIndexTree::Find(NodeId parent, std::string_view name) const {
  if (parent >= mNodes.size() || !mNodes[parent].isFolder) return kNone;
  return mSlots[SlotOf(parent, name)];
}

std::vector<std::string> ExactIndexTree::ChildNames(NodeId parent) const {
  std::vector<std::string> names;
  for (std::size_t id = 1; id < mNodes.size(); ++id) {
    if (mNodes[id].parent == parent) names.emplace_back(Name(mNodes[id]));
  }
  return names;
}

std::size_t ExactIndexTree::MemoryBytes() const {
  return mNodes.capacity() * sizeof(Node) + mNames.capacity() + mSlots.capacity() * sizeof(NodeId);
}

}  // namespace marigold
