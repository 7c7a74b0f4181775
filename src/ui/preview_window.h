// The preview window: the run's task trees as an outline (side A, the action, side B), the
// tallies, and Continue or Stop. A click on the action switches it off or on (with Alt it
// reverses a replacement); a Control-click on a side shows that item in the file manager. Every
// rule is the preview editor's; the window only passes clicks and redraws.
#pragma once

#include <QDialog>

#include "engine/preview_editor.h"

class QLabel;
class QTreeView;

namespace marigold {

class PreviewModel;

class PreviewWindow : public QDialog {
  Q_OBJECT
 public:
  // Accepted means continue with the copy; rejected means stop the run.
  // `expanded`: every folder starts open; otherwise only each task's top level.
  PreviewWindow(PreviewEditor& editor, bool expanded, QWidget* parent);

  // A click on `index` (an invalid index: no row) with the preview's keys held.
  void ClickRow(const QModelIndex& index, unsigned keys);
  // Selects the next item to be deleted (with `previous`, the one before).
  void SelectNextDeletion(bool previous);
  QTreeView* outline() const { return mOutline; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void ShowTallies();
  void Select(FileSystemItem* item);

  PreviewEditor& mEditor;
  PreviewModel* mModel;
  QTreeView* mOutline;
  QLabel* mTallies;
};

}  // namespace marigold
