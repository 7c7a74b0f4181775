// The open document and its file: reading with upgrade from older versions, writing with the
// password protection rule, and the "is it to be saved" test. One instance per application.
#pragma once

#include <string>

#include "app/app_prompts.h"
#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

class DocumentStore {
 public:
  // `templatePath` is the template file; `prompts` shows the alerts reading and writing need;
  // every file is read and written through `fs`.
  DocumentStore(std::string templatePath, AppPrompts& prompts, FileSystem& fs = SystemFileSystem());

  // Loads `path` into the main dictionary and upgrades it. False, silently, for a missing path,
  // a folder, a file that is not a dictionary property list, one without a numeric fileVersion,
  // or one whose sessionsArray is not a non-empty list of dictionaries; false with the "higher
  // version" alert for a version above 420 (silently for the template file). On failure the
  // main dictionary is unchanged. Never writes to the file.
  bool ReadDocumentFile(const std::string& path);
  // Upgrades the main dictionary in place from `version`; false, changing nothing, when it has
  // no session or a session that is not a dictionary.
  bool UpdateDocumentFile(std::int64_t version);
  // Stamps fileVersion 420 and writes the main dictionary atomically as XML; gives the file mode
  // 0700 when a session holds a volume password (except for the template). Alerts on failure,
  // and the file is then as it was.
  bool WriteFileSession(const std::string& path);
  // Serialisation differs from the document's file (or from a new template when it has none).
  bool isDocumentToBeSaved() const;

  PlistDict& mainDict() { return mMainDict; }
  const PlistDict& mainDict() const { return mMainDict; }
  void SetMainDict(PlistDict dict) { mMainDict = std::move(dict); }

  std::string pathDocumentFile;     // "" while the document has never been saved
  std::string pathFileDocTemplate;  // the template file
  std::string pathFileToOpenAtLaunch;
  bool isDocumentOpen = false;
  bool isDocumentSaved = false;
  bool isDocumentTemplate = true;

 private:
  PlistDict mMainDict;
  AppPrompts& mPrompts;
  FileSystem& mFs;
};

// True when a session holds a non-empty volume password; with `removePasswords`, empties every
// such password and reports whether any was found.
bool VolumeListContainsPassword(PlistDict& root, bool removePasswords);
// Compares two files' contents in chunks of 262144 bytes.
bool IsFileEqualToFile(const std::string& path, const std::string& other);

}  // namespace marigold
