// Feeds arbitrary bytes to the exact-sync index reader: the streamed XML reader, the fallback to
// the general parser (XML or binary), and lookups in whatever trees come out. A crash, leak or
// undefined behaviour here is a damaged index file that could take a run down.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "engine/exact_index_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  (void)marigold::ParsePairIndex(bytes, false);
  std::optional<marigold::PairIndexFile> file = marigold::ParsePairIndex(bytes, true);
  if (!file) return 0;
  for (const marigold::ExactIndexTree* tree : {&file->treeSource, &file->treeDest}) {
    marigold::ExactIndexTree::NodeId node = tree->Find(marigold::ExactIndexTree::kTop, "A");
    for (std::string_view name : {"a", "b", "c"}) {
      if (node == marigold::ExactIndexTree::kNone) break;
      node = tree->Find(node, name);
    }
  }
  return 0;
}
