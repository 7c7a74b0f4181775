#include "ui/mail_account_sheet.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <optional>

#include "logging/email_account.h"
#include "logging/email_report.h"
#include "ui/alert_dialog.h"
#include "util/strings_table.h"

namespace marigold {

MailAccountSheet::MailAccountSheet(PlistDict& account, QWidget* parent) : QDialog(parent), mAccount(account) {
  setObjectName(QStringLiteral("MailAccountSheet"));
  setWindowTitle(ToQ(GLS("Email Account")));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  auto field = [&](const char* label, const char* key, bool secret = false) {
    auto* edit = new QLineEdit(ToQ(account.GetString(key)), this);
    edit->setObjectName(QString::fromLatin1(key));
    if (secret) edit->setEchoMode(QLineEdit::Password);
    edit->setMinimumWidth(300);
    form->addRow(ToQ(GLS(label)), edit);
    return edit;
  };
  mFrom = field("From:", "mSendEmailFrom");
  mTo = field("To:", "mSendEmailTo");
  mTo->setPlaceholderText(ToQ(GLS("One or more addresses, separated by commas")));
  mAccountId = field("Account ID:", "mSendEmailAccountID");
  mPassword = field("Password:", "mSendEmailPassword", true);
  mServer = field("SMTP server:", "mSendEmailSMTP");
  mPort = field("Port:", "mSendEmailPort");
  mTls = new QComboBox(this);
  mTls->addItem(ToQ(GLS("When the server offers it")), -1);
  mTls->addItem(ToQ(GLS("Always")), 1);
  mTls->addItem(ToQ(GLS("Never")), 0);
  mTls->setCurrentIndex(std::max(0, mTls->findData(static_cast<int>(account.GetInt("mSendEmailUseSSL", -1)))));
  form->addRow(ToQ(GLS("Secure connection (TLS):")), mTls);
  layout->addLayout(form);
  mStatus = new QLabel(this);
  mStatus->setWordWrap(true);
  layout->addWidget(mStatus);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  mTest = buttons->addButton(ToQ(GLS("Send Test Message")), QDialogButtonBox::ActionRole);
  connect(mTest, &QPushButton::clicked, this, &MailAccountSheet::SendTestMessage);
  connect(buttons, &QDialogButtonBox::accepted, this, &MailAccountSheet::Apply);
  connect(buttons, &QDialogButtonBox::rejected, this, [this] {
    StopSending();
    reject();
  });
  connect(this, &MailAccountSheet::testMessageDone, this, [this](bool sent, const QString& error) {
    if (mSender.joinable()) mSender.join();
    mTest->setEnabled(true);
    mStatus->setText(sent ? ToQ(GLS("The test message was sent.")) : DisplayText(FromQ(error)));
  });
  layout->addWidget(buttons);
}

MailAccountSheet::~MailAccountSheet() { StopSending(); }

PlistDict MailAccountSheet::Edited() const {
  PlistDict edited = mAccount;
  edited.Set("mSendEmailFrom", FromQ(mFrom->text().trimmed()));
  edited.Set("mSendEmailTo", FromQ(mTo->text().trimmed()));
  edited.Set("mSendEmailAccountID", FromQ(mAccountId->text().trimmed()));
  edited.Set("mSendEmailPassword", FromQ(mPassword->text()));
  edited.Set("mSendEmailSMTP", FromQ(mServer->text().trimmed()));
  edited.Set("mSendEmailPort", FromQ(mPort->text().trimmed()));
  edited.Set("mSendEmailUseSSL", static_cast<std::int64_t>(mTls->currentData().toInt()));
  return edited;
}

std::optional<PlistDict> MailAccountSheet::CheckedEdits() {
  PlistDict edited = Edited();
  std::string reason;
  if (!CheckSendEmailDict(edited, &reason)) {
    ShowAlert(this, WarningAlert(reason));
    return std::nullopt;
  }
  StopSending();
  return edited;
}

void MailAccountSheet::Apply() {
  std::optional<PlistDict> edited = CheckedEdits();
  if (!edited) return;
  mAccount = std::move(*edited);
  accept();
}

void MailAccountSheet::SendTestMessage() {
  const std::optional<PlistDict> checked = CheckedEdits();
  if (!checked) return;
  const PlistDict edited = *checked;
  mTest->setEnabled(false);
  mStatus->setText(ToQ(GLS("Sending the test message…")));
  mCancel = std::make_shared<std::atomic<bool>>(false);
  QPointer<MailAccountSheet> sheet(this);
  mSender = std::thread([sheet, edited, cancel = mCancel] {
    MailSeams seams;
    seams.cancel = cancel.get();
    std::string error;
    const bool sent = SendTestEmail(edited, seams, &error);
    if (*cancel) return;  // the sheet has gone on without it
    QMetaObject::invokeMethod(sheet, [sheet, sent, error] {
      if (sheet) emit sheet->testMessageDone(sent, ToQ(error));
    }, Qt::QueuedConnection);
  });
}

void MailAccountSheet::StopSending() {
  if (mCancel) *mCancel = true;
  // The transport gives up at once when told to; joining here keeps no thread behind the sheet.
  if (mSender.joinable()) mSender.join();
  if (mTest) mTest->setEnabled(true);
}

}  // namespace marigold
