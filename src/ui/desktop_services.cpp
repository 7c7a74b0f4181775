#include "ui/desktop_services.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>
#include <QVariantMap>

namespace marigold {

void RevealInFileManager(const QString& path) {
  QDBusInterface manager(QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
                         QStringLiteral("org.freedesktop.FileManager1"), QDBusConnection::sessionBus());
  if (manager.isValid()) {
    const QDBusMessage reply =
        manager.call(QStringLiteral("ShowItems"), QStringList{QUrl::fromLocalFile(path).toString()}, QString());
    if (reply.type() != QDBusMessage::ErrorMessage) return;
  }
  QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

void OpenItem(const QString& path) { QDesktopServices::openUrl(QUrl::fromLocalFile(path)); }

bool NotifyDesktop(const QString& title, const QString& body) {
  QDBusInterface notifications(QStringLiteral("org.freedesktop.Notifications"),
                               QStringLiteral("/org/freedesktop/Notifications"),
                               QStringLiteral("org.freedesktop.Notifications"), QDBusConnection::sessionBus());
  if (!notifications.isValid()) return false;
  const QDBusReply<uint> reply =
      notifications.call(QStringLiteral("Notify"), QStringLiteral("Marigold"), 0u, QStringLiteral("marigold"), title,
                         body, QStringList(), QVariantMap(), -1);
  return reply.isValid();
}

}  // namespace marigold
