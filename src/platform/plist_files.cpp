#include "platform/plist_files.h"

#include "util/plist_io.h"

namespace marigold {

std::optional<PlistDict> ReadPlistDictFile(FileSystem& fs, const std::string& path) {
  const PlistLimits limits;
  FsResult<FileBytes> bytes = fs.ReadFile(path, limits.maxBytes);
  if (!bytes) return std::nullopt;
  return ParsePlistDict(bytes.Value().View(), nullptr, limits);
}

FsStatus WriteXmlPlistFile(FileSystem& fs, const std::string& path, const PlistValue& value,
                           std::optional<std::uint32_t> mode) {
  auto writer = fs.StartFileWrite(path, mode);
  if (!writer) return writer.Error();
  FsStatus written = writer.Value()->Write(ToXmlPlist(value));
  return written ? writer.Value()->Commit() : written;
}

}  // namespace marigold
