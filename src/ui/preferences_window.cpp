#include "ui/preferences_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/preferences_choices.h"
#include "logging/preference_titles.h"
#include "options/settings_titles.h"
#include "ui/alert_dialog.h"
#include "ui/desktop_services.h"
#include "ui/mail_account_sheet.h"
#include "ui/run_as_root.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// The panel's members by key, so that filling and collecting walk one table.
std::int64_t* CheckBoxValue(PreferencesPanelValues& p, const std::string& key) {
  const std::map<std::string, std::int64_t PreferencesPanelValues::*> kBoxes{
      {"prefSyncAndQuit", &PreferencesPanelValues::prefSyncAndQuit},
      {"prefAskConfirmation", &PreferencesPanelValues::prefAskConfirmation},
      {"prefPreview", &PreferencesPanelValues::prefPreview},
      {"prefPreviewExpanded", &PreferencesPanelValues::prefPreviewExpanded},
      {"prefBeepWhenDone", &PreferencesPanelValues::prefBeepWhenDone},
      {"prefShutDown", &PreferencesPanelValues::prefShutDown},
      {"prefQuit", &PreferencesPanelValues::prefQuit},
      {"prefSaveLogFile", &PreferencesPanelValues::prefSaveLogFile},
      {"prefDeleteLogsOn", &PreferencesPanelValues::prefDeleteLogsOn},
      {"prefSendEmail", &PreferencesPanelValues::prefSendEmail},
      {"prefRoot", &PreferencesPanelValues::prefRoot},
      {"prefModificationDelta", &PreferencesPanelValues::prefModificationDelta},
      {"prefOnError", &PreferencesPanelValues::prefOnError},
      {"prefSaveLogFileWhen", &PreferencesPanelValues::prefSaveLogFileWhen},
      {"prefLogFileFormat", &PreferencesPanelValues::prefLogFileFormat},
      {"prefLogKind", &PreferencesPanelValues::prefLogKind},
      {"prefDeleteLogsPop", &PreferencesPanelValues::prefDeleteLogsPop},
      {"prefSendEmailWhen", &PreferencesPanelValues::prefSendEmailWhen},
      {"prefUpdateFrequency", &PreferencesPanelValues::prefUpdateFrequency},
      {"prefDeleteLogsField", &PreferencesPanelValues::prefDeleteLogsField},
      {"prefModificationDeltaField", &PreferencesPanelValues::prefModificationDeltaField},
  };
  return &(p.*kBoxes.at(key));
}

}  // namespace

PreferencesWindow::PreferencesWindow(Preferences& preferences, bool runningAsRoot, QWidget* parent)
    : QDialog(parent), mPreferences(preferences), mRunningAsRoot(runningAsRoot), mPanel(PrefSet(preferences.dict())) {
  setObjectName(QStringLiteral("PreferencesWindow"));
  setWindowTitle(ToQ(GLS("Preferences")));
  auto* layout = new QVBoxLayout(this);
  mTabs = new QTabWidget(this);
  mTabs->addTab(GeneralTab(), ToQ(GLS("General")));
  mTabs->addTab(LogTab(), ToQ(GLS("Log")));
  mTabs->addTab(MailTab(), ToQ(GLS("E-mail")));
  layout->addWidget(mTabs);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  buttons->addButton(ToQ(GLS("Apply")), QDialogButtonBox::AcceptRole)->setDefault(true);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    if (Apply()) accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  Fill();
  resize(sizeHint().width() + 40, sizeHint().height());
}

QCheckBox* PreferencesWindow::AddBox(const std::string& key, const char* title) {
  auto* box = new QCheckBox(ToQ(GLS(title)), this);
  box->setObjectName(ToQ(key));
  connect(box, &QCheckBox::toggled, this, &PreferencesWindow::UpdateEnabling);
  mBoxes[key] = box;
  return box;
}

QComboBox* PreferencesWindow::AddPopUp(const std::string& key) {
  auto* popUp = new QComboBox(this);
  popUp->setObjectName(ToQ(key));
  for (const PreferenceChoice& choice : PreferenceChoices(key))
    popUp->addItem(ToQ(GLS(choice.title)), QVariant::fromValue<qlonglong>(choice.tag));
  mPopUps[key] = popUp;
  return popUp;
}

QSpinBox* PreferencesWindow::AddField(const std::string& key, int minimum, int maximum) {
  auto* field = new QSpinBox(this);
  field->setObjectName(ToQ(key));
  field->setRange(minimum, maximum);
  mFields[key] = field;
  return field;
}

QWidget* PreferencesWindow::GeneralTab() {
  auto* tab = new QWidget(this);
  auto* form = new QFormLayout(tab);
  form->addRow(AddBox("prefAskConfirmation", kPrefAskConfirmationTitle));
  form->addRow(AddBox("prefPreview", kPrefPreviewTitle));
  form->addRow(AddBox("prefPreviewExpanded", kPrefPreviewExpandedTitle));
  form->addRow(AddBox("prefBeepWhenDone", kPrefBeepWhenDoneTitle));
  form->addRow(AddBox("prefSyncAndQuit", kPrefSyncAndQuitTitle));
  form->addRow(AddBox("prefQuit", kPrefQuitTitle));
  form->addRow(AddBox("prefShutDown", kPrefShutDownTitle));
  form->addRow(ToQ(GLS(kPrefOnErrorLabel)), AddPopUp("prefOnError"));
  auto* delta = new QHBoxLayout;
  delta->addWidget(AddBox("prefModificationDelta", kPrefModificationDeltaTitle));
  delta->addWidget(AddField("prefModificationDeltaField", -100000, 100000));
  delta->addStretch(1);
  form->addRow(delta);
  form->addRow(AddBox("prefRoot", kRunAsRootTitle));
  form->addRow(ToQ(GLS("Check for updates:")), AddPopUp("prefUpdateFrequency"));
  form->addRow(ToQ(GLS("Last check:")), new QLabel(ToQ(mPanel.lastCheckDateText), tab));
  return tab;
}

QWidget* PreferencesWindow::LogTab() {
  auto* tab = new QWidget(this);
  auto* form = new QFormLayout(tab);
  form->addRow(AddBox("prefSaveLogFile", kPrefSaveLogFileTitle));
  form->addRow(ToQ(GLS("When:")), AddPopUp("prefSaveLogFileWhen"));
  form->addRow(ToQ(GLS(kPrefLogFileFormatLabel)), AddPopUp("prefLogFileFormat"));
  form->addRow(ToQ(GLS(kPrefLogKindLabel)), AddPopUp("prefLogKind"));
  auto* folder = new QHBoxLayout;
  mLogFolder = new QLineEdit(tab);
  mLogFolder->setReadOnly(true);
  auto* choose = new QPushButton(ToQ(GLS("Choose…")), tab);
  auto* open = new QPushButton(ToQ(GLS("Open")), tab);
  connect(choose, &QPushButton::clicked, this, [this] {
    const QString chosen = QFileDialog::getExistingDirectory(this, QString(), mLogFolder->text());
    if (!chosen.isEmpty()) mLogFolder->setText(chosen);
  });
  connect(open, &QPushButton::clicked, this, [this] {
    if (!mLogFolder->text().isEmpty()) OpenItem(mLogFolder->text());
  });
  folder->addWidget(mLogFolder, 1);
  folder->addWidget(choose);
  folder->addWidget(open);
  form->addRow(ToQ(GLS(kPrefLogFolderLabel)), folder);
  auto* retention = new QHBoxLayout;
  retention->addWidget(AddBox("prefDeleteLogsOn", kPrefDeleteLogsTitle));
  retention->addWidget(AddField("prefDeleteLogsField", -100000, 100000));
  retention->addWidget(AddPopUp("prefDeleteLogsPop"));
  retention->addStretch(1);
  form->addRow(retention);
  return tab;
}

QWidget* PreferencesWindow::MailTab() {
  auto* tab = new QWidget(this);
  auto* form = new QFormLayout(tab);
  form->addRow(AddBox("prefSendEmail", kPrefSendEmailTitle));
  form->addRow(ToQ(GLS("When:")), AddPopUp("prefSendEmailWhen"));
  auto* account = new QPushButton(ToQ(GLS("Email Account…")), tab);
  account->setObjectName(QStringLiteral("mailAccount"));
  connect(account, &QPushButton::clicked, this, [this] {
    MailAccountSheet sheet(mPanel.sendEmailDict, this);
    sheet.exec();
  });
  form->addRow(QString(), account);
  return tab;
}

void PreferencesWindow::Fill() {
  // The controls report each change; none may be read back until all are filled.
  mFilling = true;
  for (auto& [key, box] : mBoxes) box->setChecked(*CheckBoxValue(mPanel, key) != 0);
  for (auto& [key, popUp] : mPopUps) {
    const int at = popUp->findData(QVariant::fromValue<qlonglong>(*CheckBoxValue(mPanel, key)));
    popUp->setCurrentIndex(at < 0 ? 0 : at);
  }
  for (auto& [key, field] : mFields) field->setValue(static_cast<int>(*CheckBoxValue(mPanel, key)));
  mLogFolder->setText(ToQ(mPanel.prefPathLogFolder));
  mFilling = false;
  UpdateEnabling();
}

void PreferencesWindow::Collect() {
  for (auto& [key, box] : mBoxes) *CheckBoxValue(mPanel, key) = box->isChecked() ? 1 : 0;
  for (auto& [key, popUp] : mPopUps) *CheckBoxValue(mPanel, key) = popUp->currentData().toLongLong();
  for (auto& [key, field] : mFields) *CheckBoxValue(mPanel, key) = field->value();
  mPanel.prefPathLogFolder = FromQ(mLogFolder->text());
}

void PreferencesWindow::UpdateEnabling() {
  if (mFilling) return;
  Collect();
  const PreferencesEnabling on = PrefEnabling(mPanel);
  mPopUps.at("prefSaveLogFileWhen")->setEnabled(on.saveLogFileWhen);
  mPopUps.at("prefLogFileFormat")->setEnabled(on.logFileFormat);
  mBoxes.at("prefDeleteLogsOn")->setEnabled(on.deleteLogsOn);
  mPopUps.at("prefDeleteLogsPop")->setEnabled(on.deleteLogsPop);
  mFields.at("prefDeleteLogsField")->setEnabled(on.deleteLogsField);
  mPopUps.at("prefSendEmailWhen")->setEnabled(on.sendEmailWhen);
  mFields.at("prefModificationDeltaField")->setEnabled(on.modificationDeltaField);
}

bool PreferencesWindow::Apply() {
  const bool wasRoot = mPreferences.dict().GetInt("prefRoot") != 0;
  Collect();
  const PrefGetResult result = PrefGet(mPanel, mPreferences.dict());
  if (!result.ok) {
    ShowAlert(this, WarningAlert(result.alertText));
    if (result.selectDeleteLogsField) {
      mFields.at("prefDeleteLogsField")->setValue(static_cast<int>(mPanel.prefDeleteLogsField));
      mFields.at("prefDeleteLogsField")->selectAll();
      mFields.at("prefDeleteLogsField")->setFocus();
    }
    return false;
  }
  mPreferences.WriteFilePreferences(false);
  const bool wantsRoot = mPanel.prefRoot != 0;
  if (wantsRoot != wasRoot) {
    // A relaunch that did not happen puts the box back to what is true.
    auto putBack = [&preferences = mPreferences, root = mRunningAsRoot] {
      preferences.dict().Set("prefRoot", root ? 1 : 0);
      preferences.WriteFilePreferences(false);
    };
    if (!PrefRunAsRoot(parentWidget(), wantsRoot, mRunningAsRoot, putBack)) putBack();
  }
  return true;
}

}  // namespace marigold
