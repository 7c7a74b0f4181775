// Writes an exact-sync index file as XML property-list text while the trees are walked, so a
// million-item pair never exists twice in memory. The text goes to a temporary file beside the
// target and replaces the target by rename only when everything was written and synced: a
// failed or abandoned write leaves the previous index as it was and no temporary behind.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

class IndexXmlWriter {
 public:
  IndexXmlWriter() = default;
  ~IndexXmlWriter();  // abandons an uncommitted file
  IndexXmlWriter(const IndexXmlWriter&) = delete;
  IndexXmlWriter& operator=(const IndexXmlWriter&) = delete;

  // Starts the file that is to replace `target` on `fs` and writes the XML prologue, the opening
  // of the top dictionary and its first item, "fileVersion". False when the folder refuses it.
  bool Open(FileSystem& fs, const std::string& target, std::int64_t fileVersion);

  // Elements of the top dictionary or of a tree. Names and paths are escaped (see
  // exact_index_names.h) and XML-quoted here. After a failure they do nothing.
  void KeyString(std::string_view key, std::string_view text);  // text as is
  void KeyPath(std::string_view key, std::string_view path);
  void KeyDate(std::string_view key, PlistDate date);
  void OpenDict(std::string_view key);  // a plain key (the top's own keys)
  void OpenFolder(std::string_view name);  // an item name
  void CloseDict();
  void Leaf(std::string_view name);  // name and the empty string

  // Closes the document, syncs and renames over the target. False when any step failed; then
  // the target is untouched.
  bool Commit();
  // Removes the temporary file; the target is untouched.
  void Abandon();

 private:
  void Append(std::string_view text);
  void AppendQuoted(std::string_view text);
  void Indent();
  void Flush();

  std::unique_ptr<FileWriter> mFile;  // none before Open, after a failure and once committed
  std::string mBuffer;
  int mDepth = 0;
};

}  // namespace marigold
