#include "cli/commands.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "model/document_model.h"
#include "util/plist_io.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

int Refuse(const std::string& path, const std::string& reason) {
  std::fprintf(stderr, "marigold: cannot read \"%s\": %s\n", path.c_str(), reason.c_str());
  return kExitBadInput;
}

}  // namespace

int DocNew(MainApp& app, const std::string& path, bool force) {
  struct stat st {};
  if (!force && ::lstat(path.c_str(), &st) == 0) {
    std::fprintf(stderr, "marigold: \"%s\" already exists (use --force to replace it)\n", path.c_str());
    return kExitBadInput;
  }
  DocumentStore& store = app.store();
  store.SetMainDict(NewTemplate());
  // The store's own alert has said why when the write fails.
  return store.WriteFileSession(path) ? kExitOk : kExitFailed;
}

int ReadDocumentForCommand(MainApp& app, TerminalPrompts& prompts, const std::string& path) {
  // The store refuses damaged files silently (as the desktop program does at launch); a command
  // line user needs to know why, so the reasons are found here first.
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return Refuse(path, std::strerror(errno));
  if (S_ISDIR(st.st_mode)) return Refuse(path, "it is a folder");
  std::string error;
  auto dict = ReadPlistDictFile(path, &error);
  if (!dict) return Refuse(path, error.empty() ? "it is not a property list" : error);
  const PlistValue* version = dict->Find("fileVersion");
  if (!version || !(version->IsInteger() || version->IsReal()))
    return Refuse(path, "it has no fileVersion, so it is not a Marigold document");

  int alertsBefore = prompts.AlertCount();
  if (!app.store().ReadDocumentFile(path)) {
    if (prompts.AlertCount() > alertsBefore) return kExitBadInput;
    return Refuse(path, "it is not a Marigold document that this version can read");
  }
  return kExitOk;
}

int DocShow(MainApp& app, TerminalPrompts& prompts, const std::string& path) {
  if (int status = ReadDocumentForCommand(app, prompts, path); status != kExitOk) return status;
  DocumentStore& store = app.store();
  // Printed as saving would write it: the upgraded content carries the current version.
  PlistDict shown = store.mainDict();
  shown.Set("fileVersion", kFileVersion);
  std::cout << ToXmlPlist(PlistValue(shown));
  std::cout.flush();
  return std::cout ? kExitOk : kExitFailed;
}

PlistDict PreferencesForDisplay(const PlistDict& prefs) {
  PlistDict shown = prefs;
  const PlistData* scrambled = prefs.GetData("prefSendEmailDict");
  if (!scrambled) return shown;
  if (auto account = GetWellDict(*scrambled)) {
    if (!account->GetString("mSendEmailPassword").empty()) account->Set("mSendEmailPassword", "********");
    shown.Set("prefSendEmailDict", std::move(*account));
  }
  return shown;
}

int PrefsShow(MainApp& app) {
  std::cout << ToXmlPlist(PlistValue(PreferencesForDisplay(app.preferences().dict())));
  std::cout.flush();
  return std::cout ? kExitOk : kExitFailed;
}

}  // namespace marigold
