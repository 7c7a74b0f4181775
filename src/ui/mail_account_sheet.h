// The mail account sheet of the preferences: sender, recipients, server and account. OK keeps the
// account only when the library's check accepts it; "Send Test Message" sends on a worker thread
// that Cancel interrupts, so the window never waits for the network.
#pragma once

#include <QDialog>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>

#include "util/plist_value.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace marigold {

class MailAccountSheet : public QDialog {
  Q_OBJECT
 public:
  // Edits `account` (plain, unscrambled) in place when accepted.
  MailAccountSheet(PlistDict& account, QWidget* parent);
  ~MailAccountSheet() override;

  void SendTestMessage();

 signals:
  void testMessageDone(bool sent, const QString& error);

 private:
  PlistDict Edited() const;
  // The edited account when it passes the account checks (any test message under way is
  // stopped); otherwise the alert says why and nothing is returned.
  std::optional<PlistDict> CheckedEdits();
  void Apply();
  void StopSending();

  PlistDict& mAccount;
  QLineEdit* mFrom;
  QLineEdit* mTo;
  QLineEdit* mAccountId;
  QLineEdit* mServer;
  QLineEdit* mPort;
  QLineEdit* mPassword;
  QComboBox* mTls;
  QLabel* mStatus;
  QPushButton* mTest;
  std::shared_ptr<std::atomic<bool>> mCancel;
  std::thread mSender;
};

}  // namespace marigold
