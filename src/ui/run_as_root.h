// Running with administrator rights: the program relaunches itself through pkexec with
// "--setuidroot", and goes back with "--setuidme". The executable itself is never changed.
#pragma once

#include <functional>

class QWidget;

namespace marigold {

// The run-as-root box changed to `wantsRoot` in an instance that runs as root or not. Starts the
// relaunch and returns true; this instance quits only once the new one has really started. When
// the password is refused or cancelled, or the relaunch cannot start, the user is told, this
// instance keeps running, and `refused` is called (false is returned when that is known at
// once). Nothing happens, true, when the box already matches the instance.
bool PrefRunAsRoot(QWidget* parent, bool wantsRoot, bool runningAsRoot, std::function<void()> refused);

// Called by an instance started with "--setuidroot" once its window shows: tells the instance
// that asked for it that it may quit.
void ReportPrivilegedInstanceStarted();

}  // namespace marigold
