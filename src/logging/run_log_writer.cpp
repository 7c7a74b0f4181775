#include "logging/run_log_writer.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <fstream>

#include "engine/error_path.h"
#include "logging/log_files.h"
#include "logging/log_window.h"
#include "platform/identities.h"
#include "platform/network_address.h"

namespace marigold {
namespace {

// PRETTY_NAME of os-release, unquoted; the kernel's name when there is none.
std::string SystemName() {
  for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
      if (line.rfind("PRETTY_NAME=", 0) != 0) continue;
      std::string value = line.substr(12);
      if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'')) value = value.substr(1, value.size() - 2);
      return value;
    }
  }
  return "Linux";
}

}  // namespace

LogHostInfo ReadLogHostInfo() {
  LogHostInfo host;
  host.systemVersion = SystemName();
  struct utsname names {};
  if (::uname(&names) == 0) host.systemBuild = names.release;
  host.hardwareAddress = DefaultRouteHardwareAddress();
  const Identities ids = SystemIdentities().Read();
  host.uid = static_cast<long>(ids.uid);
  host.gid = static_cast<long>(ids.gid);
  host.euid = static_cast<long>(ids.euid);
  host.egid = static_cast<long>(ids.egid);
  struct passwd entry {};
  struct passwd* found = nullptr;
  char buffer[4096];
  host.userName = ::getpwuid_r(ids.uid, &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr
                      ? std::string(found->pw_name)
                      : std::to_string(ids.uid);
  host.fullName = SystemIdentities().FullName(ids.uid);
  return host;
}

RunLogWriter::RunLogWriter(std::string fallbackLogFolder) : mFallbackLogFolder(std::move(fallbackLogFolder)) {}

void RunLogWriter::PrepareRun(const PlistDict& document, bool allSessions) {
  mDocument = &document;
  mAllSessions = allSessions;
  mLogString.clear();
  mPathLogFile.clear();
  mChangedLogFolder.clear();
}

void RunLogWriter::MakeLog(RunState& state) {
  if (mContext == nullptr || mDocument == nullptr) return;
  if (!mHost) mHost = ReadLogHostInfo();
  const LogDateFormat format{mLocaleName, mContext->clock.TimeZoneName()};
  mLogString = RunLogText(state, *mDocument, mContext->preferences, mContext->fs, *mHost, format, mAllSessions).MakeLog();

  PlistDict prefs = mContext->preferences;
  LogFiles files(mContext->fs, prefs, mFallbackLogFolder);
  const std::string fileName = LogFileName(state.gStartSyncDateTime, prefs.GetInt("prefLogFileFormat"), format.timeZone);
  const auto report = [&](const std::string& message) {
    mContext->errors.SetErrMsg({message});
    if (state.gMakeDetailedLog || state.gMakeErrorsLog) mLogString += std::string(kLogErrorMarker) + message + "\r";
    mContext->errors.AddErrQuickly(0);
  };
  const std::optional<std::string> saved =
      files.SaveLogFileToDisk(mLogString, state.gGlobalError, fileName, mContext->clock.Now(), report);
  mPathLogFile = saved.value_or("");
  if (prefs.GetString("prefPathLogFolder") != mContext->preferences.GetString("prefPathLogFolder"))
    mChangedLogFolder = prefs.GetString("prefPathLogFolder");
}

}  // namespace marigold
