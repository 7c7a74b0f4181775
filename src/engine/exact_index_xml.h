// A pull reader for XML property-list text, enough to stream an exact-sync index into a compact
// tree without building the whole document: tags one at a time, element text with entities and
// CDATA decoded, and skipping of whole values without recursion (so no nesting depth can
// exhaust the stack). Anything it does not understand is a failure; the caller then falls back
// to the general property-list parser.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace marigold {

// How every index file the program writes begins. A file that begins so is read by the streamed
// reader alone: a damaged one is refused at once instead of being handed to the general parser,
// whose memory on a large index is several times the file's size.
inline constexpr std::string_view kIndexXmlSignature =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n\t<key>fileVersion</key>";

class IndexXmlCursor {
 public:
  explicit IndexXmlCursor(std::string_view text) : mText(text) {}

  struct Tag {
    std::string_view name;
    bool closing = false;      // </name>
    bool selfClosing = false;  // <name/>
  };

  // The next element tag, after whitespace, comments, processing instructions and a DOCTYPE.
  // False at the end of the input, on text between tags, or on malformed markup.
  bool NextTag(Tag& tag);
  // The text of the element whose opening tag `open` was just read, up to its closing tag,
  // appended to `out` (cleared first). An empty element (<string/>) gives "".
  bool ReadElementText(const Tag& open, std::string& out);
  // Skips the rest of the value whose opening tag `open` was just read, nested values included.
  bool SkipValue(const Tag& open);
  // Only whitespace, comments and processing instructions remain.
  bool AtEnd();

 private:
  bool SkipMarkup();  // at "<!" or "<?": comment, DOCTYPE, processing instruction
  bool ParseTag(Tag& tag);
  bool AppendEntity(std::string& out);
  void SkipSpace();

  std::string_view mText;
  std::size_t mPos = 0;
};

}  // namespace marigold
