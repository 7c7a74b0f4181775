// Running with administrator rights: the program relaunches itself through pkexec with
// "--setuidroot", and goes back with "--setuidme". The executable itself is never changed.
#pragma once

class QWidget;

namespace marigold {

// The run-as-root box changed to `wantsRoot` in an instance that runs as root or not. Relaunches
// and quits this instance (after asking, when leaving root) and returns true; returns false when
// the relaunch could not start (a refusal is shown). Nothing happens, true, when the box already
// matches the instance.
bool PrefRunAsRoot(QWidget* parent, bool wantsRoot, bool runningAsRoot);

}  // namespace marigold
