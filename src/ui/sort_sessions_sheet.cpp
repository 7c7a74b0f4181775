#include "ui/sort_sessions_sheet.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/alert_dialog.h"
#include "util/plist_io.h"
#include "util/strings_table.h"

namespace marigold {

int SortSessionsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(mSessions.numberOfRowsInTableView());
}

QVariant SortSessionsModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  return QStringLiteral("%1.  %2")
      .arg(ToQ(mSessions.ObjectValue("progressive", index.row())), ToQ(mSessions.ObjectValue("name", index.row())));
}

Qt::ItemFlags SortSessionsModel::flags(const QModelIndex& index) const {
  // Rows are dragged; drops land between rows, never onto one.
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

QStringList SortSessionsModel::mimeTypes() const { return {QString::fromLatin1(kMimeType)}; }

QMimeData* SortSessionsModel::mimeData(const QModelIndexList& indexes) const {
  std::vector<std::int64_t> rows;
  for (const QModelIndex& index : indexes) rows.push_back(index.row());
  std::sort(rows.begin(), rows.end());
  const std::optional<PlistArray> dragged = mSessions.ArrayFromIndexes(rows);
  if (!dragged) return nullptr;
  auto* data = new QMimeData;
  data->setData(QString::fromLatin1(kMimeType), QByteArray::fromStdString(ToXmlPlist(PlistValue(*dragged))));
  return data;
}

bool SortSessionsModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int, const QModelIndex& parent) {
  if (data == nullptr || !data->hasFormat(QString::fromLatin1(kMimeType))) return false;
  const std::optional<PlistValue> value = ParsePlist(data->data(QString::fromLatin1(kMimeType)).toStdString());
  if (!value || !value->IsArray()) return false;
  // A drop on a row counts as above it; a drop past the end appends.
  const std::int64_t target = row >= 0 ? row : (parent.isValid() ? parent.row() : rowCount());
  const std::vector<std::int64_t> moved = mSessions.AcceptDrop(*value->AsArray(), target);
  if (moved.empty()) return false;
  Reload();
  emit rowsMoved(moved);
  // The move is complete here: the view must not remove the dragged rows again.
  return false;
}

void SortSessionsModel::Reload() {
  beginResetModel();
  endResetModel();
}

SortSessionsSheet::SortSessionsSheet(const PlistArray& sessions, QWidget* parent)
    : QDialog(parent), mSessions(sessions), mModel(new SortSessionsModel(mSessions, this)) {
  setObjectName(QStringLiteral("SortSessionsSheet"));
  setWindowTitle(ToQ(GLS("Sort Sessions")));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(ToQ(GLS("Drag the sessions into the order you want.")), this));
  mList = new QListView(this);
  mList->setModel(mModel);
  mList->setSelectionMode(QAbstractItemView::ExtendedSelection);
  mList->setDragDropMode(QAbstractItemView::DragDrop);
  mList->setDefaultDropAction(Qt::MoveAction);
  mList->setDropIndicatorShown(true);
  mList->setAlternatingRowColors(true);
  layout->addWidget(mList, 1);
  connect(mModel, &SortSessionsModel::rowsMoved, this, [this](const std::vector<std::int64_t>& rows) {
    mList->clearSelection();
    for (std::int64_t row : rows) mList->selectionModel()->select(mModel->index(static_cast<int>(row)), QItemSelectionModel::Select);
  });
  auto* buttons = new QDialogButtonBox(this);
  auto* remove = buttons->addButton(ToQ(GLS("Remove")), QDialogButtonBox::ActionRole);
  buttons->addButton(QDialogButtonBox::Cancel);
  buttons->addButton(ToQ(GLS("Apply")), QDialogButtonBox::AcceptRole)->setDefault(true);
  connect(remove, &QPushButton::clicked, this, &SortSessionsSheet::DeleteSelectedRows);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  resize(360, 380);
}

void SortSessionsSheet::DeleteSelectedRows() {
  std::vector<std::int64_t> rows;
  for (const QModelIndex& index : mList->selectionModel()->selectedRows()) rows.push_back(index.row());
  if (rows.empty()) return;
  if (const std::optional<std::string> refusal = mSessions.DeleteSelectedRows(rows)) {
    ShowAlert(this, WarningAlert(*refusal));
    return;
  }
  mModel->Reload();
}

void SortSessionsSheet::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
    DeleteSelectedRows();
    return;
  }
  QDialog::keyPressEvent(event);
}

std::optional<PlistArray> SortSessionsSheet::Ask() {
  if (exec() != QDialog::Accepted) return std::nullopt;
  return mSessions.sessions();
}

}  // namespace marigold
