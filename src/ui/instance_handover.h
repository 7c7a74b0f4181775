// One desktop program per user: a later start (a document opened from the file manager, or given
// on the command line) hands its document to the program already running, which opens it and
// comes to the front, and ends. The two meet on a local socket in the user's runtime folder.
#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

namespace marigold {

// The socket's path, beside the scheduler lock in the user's runtime folder.
QString InstanceSocketPath();

// Gives `document` (an absolute path; "" only brings the window forward) to the program already
// running for this user. True when it took it over; false when none answers.
bool HandOverToRunningInstance(const QString& document);

class InstanceServer : public QObject {
  Q_OBJECT
 public:
  explicit InstanceServer(QObject* parent = nullptr);
  // Starts answering later starts. A socket left behind by a program that crashed is removed
  // first; false when another program answers on it (or the socket cannot be made).
  bool Listen();

 signals:
  // A later start handed over `path` ("" when it gave no document).
  void handedOver(const QString& path);

 private:
  void Accept();
  QLocalServer* mServer;
};

}  // namespace marigold
