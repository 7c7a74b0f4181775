#include "ui/name_sheet.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "app/session_management.h"
#include "ui/alert_dialog.h"
#include "util/strings_table.h"

namespace marigold {

NameSheet::NameSheet(PlistDict& root, std::optional<std::int64_t> renamingIndex, const std::string& proposed,
                     QWidget* parent)
    : QDialog(parent), mRoot(root), mRenamingIndex(renamingIndex) {
  setObjectName(QStringLiteral("NameSheet"));
  setWindowTitle(ToQ(GLS("Session Name")));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(ToQ(GLS("Name of the session:")), this));
  mField = new QLineEdit(ToQ(proposed), this);
  mField->selectAll();
  mField->setMinimumWidth(320);
  layout->addWidget(mField);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &NameSheet::Apply);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
}

void NameSheet::Apply() {
  const NameCheck check = AskNameApply(mRoot, FromQ(mField->text()), mRenamingIndex);
  switch (check.verdict) {
    case NameVerdict::Accept: accept(); return;
    case NameVerdict::Unchanged: reject(); return;
    case NameVerdict::Refuse:
      ShowAlert(this, WarningAlert(check.message));
      mField->setFocus();
      return;
  }
}

std::optional<std::string> NameSheet::Ask() {
  if (exec() != QDialog::Accepted) return std::nullopt;
  return FromQ(mField->text());
}

}  // namespace marigold
