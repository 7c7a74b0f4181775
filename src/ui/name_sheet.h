// The name sheet of the session menu: a proposed name, OK and Cancel. OK runs the library's name
// check; a refused name shows its warning and the sheet stays.
#pragma once

#include <QDialog>
#include <optional>
#include <string>

#include "util/plist_value.h"

class QLineEdit;

namespace marigold {

class NameSheet : public QDialog {
  Q_OBJECT
 public:
  // `renamingIndex`: the session being renamed; nothing when a new name is asked for.
  NameSheet(PlistDict& root, std::optional<std::int64_t> renamingIndex, const std::string& proposed,
            QWidget* parent);

  // The accepted name; nothing when cancelled or when a rename kept the session's own name.
  std::optional<std::string> Ask();
  QLineEdit* field() const { return mField; }

 private:
  void Apply();

  PlistDict& mRoot;
  std::optional<std::int64_t> mRenamingIndex;
  QLineEdit* mField;
};

}  // namespace marigold
