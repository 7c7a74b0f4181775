#include "index_test_support.h"

#include "model/document_model.h"

namespace marigold::index_test {

IndexHarness::IndexHarness() {
  preferences.Set("prefOnError", 2);
  trees::Build(temp.Join("support"), {});
  document = run_test::MakeDocument({{temp.Join("A"), temp.Join("B"), 1, true}});
  SetFolders(temp.Join("A"), temp.Join("B"));
}

void IndexHarness::SetSessionKey(const std::string& sub, const std::string& key, PlistValue value) {
  GetSessionDict(document, 0)->GetDict(sub)->Set(key, std::move(value));
}

void IndexHarness::SetFolders(const std::string& source, const std::string& dest) {
  mSource = source;
  mDest = dest;
  trees::Build(source, {});
  trees::Build(dest, {});
  SetSessionKey("consoleDict", "topFolder", source);
  SetSessionKey("consoleDict", "bottomFolder", dest);
}

void IndexHarness::SetTask(index_test::Task task) {
  SetSessionKey("settingsDict", "settTask", task == kExactSync || task == kSync ? 1 : 2);
  SetSessionKey("settingsDict", "settExact", task == kExactSync || task == kExactBackup ? 1 : 0);
}

void IndexHarness::SetExactSyncRules(int radio, int ask) {
  SetSessionKey("conflictsDict", "conflictExactSyncRadio", radio);
  SetSessionKey("conflictsDict", "conflictExactSyncAsk", ask);
}

RunDriver& IndexHarness::Run(int executedBy, FileSystem* fs) {
  mDriver.reset();
  index = std::make_unique<ExactSyncIndex>(IndexFolder());
  services.exactIndex = index.get();
  return RunHarness::Run(0, executedBy, fs);
}

IndexContext::IndexContext(const std::string& indexFolder, const std::string& source, const std::string& dest)
    : index(indexFolder) {
  state.gSourceFolder = source;
  state.gDestFolder = dest;
  state.session.gIsSyncOn = true;
  state.session.gIsExactOn = true;
  state.mExecutedBy = kExecutedByTimer;
  state.gMakeDetailedLog = true;
  index.Bind(context);
}

void WriteIndexFiles(const std::string& indexFolder, const std::string& source, const std::string& dest,
                     const std::string& treeSourceXml, const std::string& treeDestXml) {
  trees::Build(indexFolder, {});
  trees::Write(indexFolder + "/MG3ExactSyncMainIndex.plist",
               "<plist version=\"1.0\"><dict><key>fileVersion</key><integer>320</integer>"
               "<key>indexFilesList</key><array><dict><key>absolutePathSource</key><string>" + source +
                   "</string><key>absolutePathDest</key><string>" + dest +
                   "</string><key>indexFileName</key><string>pair.plist</string></dict></array></dict></plist>");
  trees::Write(indexFolder + "/pair.plist",
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>fileVersion</key><integer>320</integer>"
               "<key>absolutePathSource</key><string>" + source + "</string>"
               "<key>absolutePathDest</key><string>" + dest + "</string>"
               "<key>lastExactSyncDate</key><date>2026-01-02T03:04:05Z</date>"
               "<key>treeSource</key>" + treeSourceXml + "<key>treeDest</key>" + treeDestXml + "</dict></plist>");
}

}  // namespace marigold::index_test
