// A fresh folder under the system's temporary folder, removed with everything in it when the
// object goes out of scope. Permissions are restored first so that read-only trees go too.
#pragma once

#include <string>

namespace marigold {

class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // The folder's absolute path, without a trailing slash.
  const std::string& Path() const { return mPath; }
  // Path() + "/" + relative.
  std::string Join(const std::string& relative) const { return mPath + "/" + relative; }
  // Writes `contents` to `relative`, creating parent folders; returns the full path.
  std::string WriteFile(const std::string& relative, const std::string& contents) const;
  // The whole contents of `relative` (or of an absolute path), or "" when it cannot be read.
  std::string ReadFile(const std::string& pathOrRelative) const;

 private:
  std::string mPath;
};

}  // namespace marigold
