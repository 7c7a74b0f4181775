// The replace prompt: both items with their paths and dates, the explanation, Replace, Skip and
// Stop, and the direction button where the conflict allows it. Its wording is the library's.
#pragma once

#include <QDialog>

#include "engine/appkit_proxy.h"
#include "engine/replace_prompt.h"

class QLabel;
class QPushButton;
class QToolButton;

namespace marigold {

class ReplaceDialog : public QDialog {
  Q_OBJECT
 public:
  ReplaceDialog(const ReplaceRequest& request, QWidget* parent);

  // Runs the dialog modally: kReplaceResultReplace, kReplaceResultSkip or kReplaceResultStop,
  // negated when the direction was changed.
  int Ask();

 private:
  void ShowTexts();
  QWidget* SideBox(const std::string& path, const ReplaceSide& side, bool shown);

  ReplaceRequest mRequest;
  bool mDirectionChanged = false;
  int mResult = kReplaceResultSkip;
  QLabel* mText = nullptr;
  QToolButton* mDirection = nullptr;
  QPushButton* mReplace = nullptr;
  QPushButton* mSkip = nullptr;
};

}  // namespace marigold
