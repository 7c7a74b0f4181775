// The sort sheet: the sessions in a list that can be reordered by dragging and thinned with
// Delete; Apply hands the new order to the document, Cancel leaves it as it was. The list edits
// the library's copy of the sessions, so every move and refusal follows its rules.
#pragma once

#include <QAbstractListModel>
#include <QDialog>
#include <optional>

#include "app/session_management.h"

class QListView;

namespace marigold {

// The list model over the sheet's copy. Drags carry the dragged sessions as a property list.
class SortSessionsModel : public QAbstractListModel {
  Q_OBJECT
 public:
  explicit SortSessionsModel(SortSessions& sessions, QObject* parent = nullptr)
      : QAbstractListModel(parent), mSessions(sessions) {}
  static constexpr const char* kMimeType = "application/x-marigold-sessions";

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                    const QModelIndex& parent) override;
  void Reload();

 signals:
  void rowsMoved(const std::vector<std::int64_t>& rows);

 private:
  SortSessions& mSessions;
};

class SortSessionsSheet : public QDialog {
  Q_OBJECT
 public:
  SortSessionsSheet(const PlistArray& sessions, QWidget* parent);

  // The sorted sessions when applied; nothing when cancelled.
  std::optional<PlistArray> Ask();
  void DeleteSelectedRows();
  QListView* list() const { return mList; }
  SortSessionsModel* model() const { return mModel; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  SortSessions mSessions;
  SortSessionsModel* mModel;
  QListView* mList;
};

}  // namespace marigold
