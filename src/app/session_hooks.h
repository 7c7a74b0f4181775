// What runs around a session: its before and after shell scripts and the volumes it mounts
// before its scan and unmounts after it (the run's session-hooks role). Runs on the worker.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "engine/run_services.h"
#include "options/auto_mount_volumes.h"
#include "options/session_scripts.h"
#include "platform/volume_mounter.h"

namespace marigold {

class SessionVolumesAndScripts : public SessionHooks {
 public:
  explicit SessionVolumesAndScripts(VolumeMounter& mounter = SystemVolumeMounter()) : mMounter(mounter) {}
  void Bind(EngineContext& context) override { mContext = &context; }

  void GetExecutiveAppleScripts(RunState& state, const PlistDict& document, std::int64_t sessionIndex) override;
  void ExecuteAppleScript(RunState& state, const PlistDict& session, int which) override;

  bool MountAllVolumesForSession(RunState& state, const PlistDict& session) override;
  void UnmountAllVolumesForSession(RunState& state, const PlistDict& session) override;
  bool IsOnUmountedVolume(RunState& state, const std::string& path) override;

 private:
  // The script error path: the "√ " line, the count, and the error handler's answer.
  void ManageAppleScriptError(const std::string& message, const ScriptProblem& problem);
  // Where a row's volume is mounted now, or "" when it is not.
  std::string MountedPathOf(const VolumeRow& row);
  bool UnmountRow(const VolumeRow& row, const std::string& mountedAt, std::string& detail);

  VolumeMounter& mMounter;
  EngineContext* mContext = nullptr;
  std::vector<ExecutiveScripts> mScripts;
  std::vector<VolumeRow> mRows;  // the current session's rows that a run mounts
  // Identity keys and mount points of the volumes this run mounted: a dry run unmounts only
  // those, leaving the system as it found it.
  std::set<std::string> mMountedByRun;
  std::vector<std::pair<std::string, std::string>> mMountPoints;  // row text -> where it went
};

}  // namespace marigold
