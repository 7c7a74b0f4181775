// Cheap structural checks run on property-list bytes before the real parser sees them. The parser
// recurses once per nesting level and expands shared binary objects, so unchecked input could
// overflow the stack, loop on a reference cycle, or multiply into gigabytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace marigold {

// XML: the deepest nesting of <array> and <dict> elements, skipping comments, CDATA,
// processing instructions and the DOCTYPE. Returns false (with a reason) past maxDepth.
bool CheckXmlPlistShape(std::string_view bytes, int maxDepth, std::string* error);

// Binary ("bplist00"): walks the object table from the top object, refusing reference
// cycles, out-of-range references, nesting past maxDepth and graphs that expand to more than
// maxNodes values.
bool CheckBinaryPlistShape(std::string_view bytes, int maxDepth, std::size_t maxNodes,
                           std::string* error);

}  // namespace marigold
