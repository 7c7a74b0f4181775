#include "ui/preview_model.h"

#include <QBrush>
#include <QColor>
#include <QFileIconProvider>

#include "engine/copy_mode.h"
#include "ui/action_icons.h"
#include "ui/alert_dialog.h"
#include "util/strings_table.h"

namespace marigold {

PreviewModel::PreviewModel(PreviewEditor& editor, QObject* parent) : QAbstractItemModel(parent), mEditor(editor) {}

FileSystemItem* PreviewModel::ItemOf(const QModelIndex& index) {
  return index.isValid() ? static_cast<FileSystemItem*>(index.internalPointer()) : nullptr;
}

QModelIndex PreviewModel::IndexOf(FileSystemItem* item, int column) const {
  if (item == nullptr) return {};
  return createIndex(static_cast<int>(item->indexInParent()), column, item);
}

void PreviewModel::RefreshAll() {
  // Views fetch every visible cell again on a change that spans the top rows.
  if (rowCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

QModelIndex PreviewModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || column < 0 || column >= columnCount()) return {};
  if (!parent.isValid()) {
    if (static_cast<std::size_t>(row) >= mEditor.totRootItems()) return {};
    return createIndex(row, column, &mEditor.rootItem(static_cast<std::size_t>(row)));
  }
  FileSystemItem* item = ItemOf(parent);
  if (row >= item->numberOfChildren()) return {};
  return createIndex(row, column, &item->childAtIndex(static_cast<std::size_t>(row)));
}

QModelIndex PreviewModel::parent(const QModelIndex& child) const {
  FileSystemItem* item = ItemOf(child);
  return item == nullptr ? QModelIndex() : IndexOf(item->parent());
}

int PreviewModel::rowCount(const QModelIndex& parent) const {
  if (parent.column() > 0) return 0;
  if (!parent.isValid()) return static_cast<int>(mEditor.totRootItems());
  const int children = ItemOf(parent)->numberOfChildren();
  return children == FileSystemItem::kLeaf ? 0 : children;
}

int PreviewModel::columnCount(const QModelIndex&) const { return 3; }

bool PreviewModel::hasChildren(const QModelIndex& parent) const { return rowCount(parent) > 0; }

QVariant PreviewModel::data(const QModelIndex& index, int role) const {
  FileSystemItem* item = ItemOf(index);
  if (item == nullptr) return {};
  const ScanNode& node = item->relativeDict();
  const bool isRoot = item->parent() == nullptr;
  const int mode = node.copyMode;
  switch (index.column()) {
    case kPreviewColumnSideA:
    case kPreviewColumnSideB: {
      const bool sideA = index.column() == kPreviewColumnSideA;
      const ItemSnapshot& side = sideA ? node.snapshotA : node.snapshotB;
      if (role == Qt::DisplayRole) {
        if (isRoot) return ToQ(sideA ? item->firstNodeItem().source : item->firstNodeItem().dest);
        return side.exists || isRoot ? ToQ(sideA ? node.name : node.DestName()) : QString();
      }
      if (role == Qt::ToolTipRole) return ToQ(sideA ? item->SourcePath() : item->DestPath());
      if (role == Qt::DecorationRole && (side.exists || isRoot)) {
        return QFileIconProvider().icon(side.kind == ItemKind::kFolder || isRoot ? QFileIconProvider::Folder
                                                                                  : QFileIconProvider::File);
      }
      // Items whose action is off or skipped are drawn in red.
      if (role == Qt::ForegroundRole && mode < 1) return QBrush(QColor(0xc6, 0x28, 0x28));
      return {};
    }
    case kPreviewColumnAction:
      if (role == Qt::DecorationRole) return CopyModeIcon(mode, item->iconName());
      if (role == Qt::ToolTipRole) return ToQ(GLS(std::string(CopyModeWords(mode))));
      return {};
    default:
      return {};
  }
}

QVariant PreviewModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case kPreviewColumnSideA: return ToQ(GLS("Side A"));
    case kPreviewColumnAction: return ToQ(GLS("Action"));
    case kPreviewColumnSideB: return ToQ(GLS("Side B"));
    default: return {};
  }
}

}  // namespace marigold
