// What the program asks of the desktop: showing an item in the file manager, and the
// notification of a run that ended while nobody watched the window.
#pragma once

#include <QString>

namespace marigold {

// Selects the item in the file manager (org.freedesktop.FileManager1); opens its folder when no
// file manager answers.
void RevealInFileManager(const QString& path);
// Opens the item (a folder in the file manager, a file in its application).
void OpenItem(const QString& path);
// A freedesktop notification; false when no notification service answers.
bool NotifyDesktop(const QString& title, const QString& body);

}  // namespace marigold
