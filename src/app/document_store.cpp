#include "app/document_store.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <vector>

#include "model/document_model.h"
#include "app/document_upgrade.h"
#include "platform/plist_files.h"
#include "util/plist_io.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

constexpr std::size_t kCompareChunk = 262144;

AlertRequest CriticalAlert(std::string text) {
  AlertRequest request;
  request.style = AlertRequest::Style::Critical;
  request.title = GLS("Warning:");
  request.text = std::move(text);
  request.buttons = {GLS("OK")};
  return request;
}

}  // namespace

DocumentStore::DocumentStore(std::string templatePath, AppPrompts& prompts, FileSystem& fs)
    : pathFileDocTemplate(std::move(templatePath)), mPrompts(prompts), mFs(fs) {}

bool DocumentStore::ReadDocumentFile(const std::string& path) {
  if (path.empty()) return false;
  std::optional<PlistDict> loaded = ReadPlistDictFile(mFs, path);
  if (!loaded) return false;
  const PlistValue* versionValue = loaded->Find("fileVersion");
  // Only a number is a version; any other value is as good as none.
  if (versionValue == nullptr || !(versionValue->IsInteger() || versionValue->IsReal())) return false;
  const std::int64_t version = versionValue->NumberOr(kFileVersion + 1);

  if (version <= kFileVersion) {
    // Upgraded aside, so that a document refused by the upgrade leaves the open one as it was.
    if (!UpgradeDocument(*loaded, version, Now())) return false;
    mMainDict = std::move(*loaded);
    return true;
  }
  if (path == pathFileDocTemplate) return false;
  mPrompts.Alert(CriticalAlert(GLS("Can't open the file") + "\r\"" + path + "\"\r" +
                               GLS("because it has been created by a higher version.")));
  return false;
}

bool DocumentStore::UpdateDocumentFile(std::int64_t version) {
  return UpgradeDocument(mMainDict, version, Now());
}

bool DocumentStore::WriteFileSession(const std::string& path) {
  mMainDict.Set("fileVersion", kFileVersion);
  const bool isTemplate = path == pathFileDocTemplate;
  const bool hasPassword = !isTemplate && VolumeListContainsPassword(mMainDict, false);
  // A file holding passwords is never readable by others, not even while it is being written.
  const std::optional<std::uint32_t> mode = hasPassword ? std::optional<std::uint32_t>(0700) : std::nullopt;
  const FsStatus written = WriteXmlPlistFile(mFs, path, PlistValue(mMainDict), mode);
  if (written) return true;
  std::string text = GLS("Can't write the file") + " \"" + path + "\" " + GLS("to the disk");
  if (hasPassword && written.Error().operation == "set mode") {
    // The text names rw------- although the mode asked for is rwx------; both are kept as they are.
    text += " " + GLS(
                      "because it contains passwords to connect to remote volumes, and I cannot set the file "
                      "permissions to rw-------");
  }
  text += ".";
  mPrompts.Alert(CriticalAlert(std::move(text)));
  return false;
}

bool DocumentStore::isDocumentToBeSaved() const {
  if (!isDocumentOpen || isDocumentTemplate || mMainDict.empty()) return false;
  // Compared as values, not as text: a file another tool wrote (binary, or keys in another order)
  // holding the same document needs no saving.
  const std::optional<PlistDict> saved = pathDocumentFile.empty() ? std::optional<PlistDict>(NewTemplate())
                                                                  : ReadPlistDictFile(mFs, pathDocumentFile);
  return !saved || !(*saved == mMainDict);
}

bool VolumeListContainsPassword(PlistDict& root, bool removePasswords) {
  PlistArray* sessions = root.GetArray("sessionsArray");
  if (sessions == nullptr) return false;
  bool found = false;
  for (PlistValue& sessionValue : *sessions) {
    PlistDict* session = sessionValue.AsDict();
    PlistDict* autoMount = session != nullptr ? session->GetDict("autoMountDict") : nullptr;
    PlistArray* rows = autoMount != nullptr ? autoMount->GetArray("autoMountVolumeArray") : nullptr;
    if (rows == nullptr) continue;
    for (PlistValue& rowValue : *rows) {
      PlistDict* row = rowValue.AsDict();
      const PlistData* password = row != nullptr ? row->GetData("password") : nullptr;
      if (password == nullptr || GetWellData(*password).empty()) continue;
      if (!removePasswords) return true;
      row->Set("password", PlistData());
      found = true;
    }
  }
  return found;
}

bool IsFileEqualToFile(const std::string& path, const std::string& other) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) ||
      ::stat(other.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
    return false;
  }
  std::ifstream first(path, std::ios::binary);
  std::ifstream second(other, std::ios::binary);
  if (!first || !second) return false;
  std::vector<char> a(kCompareChunk), b(kCompareChunk);
  while (true) {
    first.read(a.data(), static_cast<std::streamsize>(a.size()));
    second.read(b.data(), static_cast<std::streamsize>(b.size()));
    const std::streamsize countA = first.gcount();
    const std::streamsize countB = second.gcount();
    if (countA != countB || !std::equal(a.begin(), a.begin() + countA, b.begin())) return false;
    if (countA == 0) return true;
  }
}

}  // namespace marigold
