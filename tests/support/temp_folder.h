// A fresh folder (under the system's temporary folder unless a parent is given), reachable by
// every user, removed with everything in it when the object goes out of scope. Permissions and,
// for root, locked flags are cleared first so that read-only and locked trees go too.
#pragma once

#include <string>

namespace marigold {

class TempFolder {
 public:
  explicit TempFolder(const std::string& parent = "");
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // The folder's absolute path, without a trailing slash.
  const std::string& Path() const { return mPath; }
  // Path() + "/" + relative.
  std::string Join(const std::string& relative) const { return mPath + "/" + relative; }
  std::string operator/(const std::string& relative) const { return Join(relative); }
  // Writes `contents` to `relative`, creating parent folders; returns the full path.
  std::string WriteFile(const std::string& relative, const std::string& contents) const;
  // The whole contents of `relative` (or of an absolute path), or "" when it cannot be read.
  std::string ReadFile(const std::string& pathOrRelative) const;

 private:
  std::string mPath;
};

}  // namespace marigold
