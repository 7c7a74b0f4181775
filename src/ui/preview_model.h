// The preview outline as a Qt item model: one top-level row per task tree, then the items of
// each folder as the user opens it. Rows are the library's preview items, so what the model
// shows is exactly what the run will do.
#pragma once

#include <QAbstractItemModel>

#include "engine/preview_editor.h"

namespace marigold {

class PreviewModel : public QAbstractItemModel {
  Q_OBJECT
 public:
  explicit PreviewModel(PreviewEditor& editor, QObject* parent = nullptr);

  static FileSystemItem* ItemOf(const QModelIndex& index);
  QModelIndex IndexOf(FileSystemItem* item, int column = 0) const;
  // Every shown row may have changed its mode: redraw them all.
  void RefreshAll();

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  PreviewEditor& mEditor;
};

}  // namespace marigold
