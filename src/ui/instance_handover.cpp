#include "ui/instance_handover.h"

#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include "app/scheduler_lock.h"

namespace marigold {
namespace {

constexpr int kAnswerMilliseconds = 5000;
const QByteArray kTaken = QByteArrayLiteral("taken\n");

}  // namespace

QString InstanceSocketPath() {
  return QFileInfo(QString::fromStdString(SchedulerLock::LockPath())).path() + QStringLiteral("/marigold-gui.socket");
}

bool HandOverToRunningInstance(const QString& document) {
  QLocalSocket socket;
  socket.connectToServer(InstanceSocketPath());
  if (!socket.waitForConnected(kAnswerMilliseconds)) return false;
  socket.write(document.toUtf8() + '\n');
  if (!socket.waitForBytesWritten(kAnswerMilliseconds)) return false;
  // The running program says it took the document before it opens it (which may ask questions).
  while (socket.bytesAvailable() < kTaken.size()) {
    if (!socket.waitForReadyRead(kAnswerMilliseconds)) return false;
  }
  return socket.readAll().startsWith(kTaken);
}

InstanceServer::InstanceServer(QObject* parent) : QObject(parent), mServer(new QLocalServer(this)) {
  mServer->setSocketOptions(QLocalServer::UserAccessOption);
  connect(mServer, &QLocalServer::newConnection, this, &InstanceServer::Accept);
}

bool InstanceServer::Listen() {
  const QString path = InstanceSocketPath();
  QLocalSocket probe;
  probe.connectToServer(path);
  if (probe.waitForConnected(500)) return false;
  // Nobody answers: whatever is left at the path belongs to a program that is gone.
  QLocalServer::removeServer(path);
  return mServer->listen(path);
}

void InstanceServer::Accept() {
  while (QLocalSocket* socket = mServer->nextPendingConnection()) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
      if (!socket->canReadLine()) return;
      const QString path = QString::fromUtf8(socket->readLine()).chopped(1);
      socket->write(kTaken);
      socket->flush();
      socket->disconnectFromServer();
      emit handedOver(path);
    });
  }
}

}  // namespace marigold
