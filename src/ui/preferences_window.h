// The preferences window: every preference with the panel's enabling rules, validated and
// stored by the library when Apply is pressed; the run-as-root box relaunches the program.
#pragma once

#include <QDialog>
#include <map>
#include <string>

#include "app/preferences.h"
#include "app/preferences_rules.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;
class QTabWidget;

namespace marigold {

class PreferencesWindow : public QDialog {
  Q_OBJECT
 public:
  PreferencesWindow(Preferences& preferences, bool runningAsRoot, QWidget* parent);

  // Validates and stores the panel; true when the window may close.
  bool Apply();
  QCheckBox* box(const std::string& key) const { return mBoxes.at(key); }
  QComboBox* popUp(const std::string& key) const { return mPopUps.at(key); }
  QSpinBox* field(const std::string& key) const { return mFields.at(key); }

 private:
  QWidget* GeneralTab();
  QWidget* LogTab();
  QWidget* MailTab();
  QCheckBox* AddBox(const std::string& key, const char* title);
  QComboBox* AddPopUp(const std::string& key);
  QSpinBox* AddField(const std::string& key, int minimum, int maximum);
  void Fill();
  void Collect();
  void UpdateEnabling();

  Preferences& mPreferences;
  bool mRunningAsRoot;
  bool mFilling = true;
  PreferencesPanelValues mPanel;
  QTabWidget* mTabs = nullptr;
  QLineEdit* mLogFolder = nullptr;
  std::map<std::string, QCheckBox*> mBoxes;
  std::map<std::string, QComboBox*> mPopUps;
  std::map<std::string, QSpinBox*> mFields;
};

}  // namespace marigold
