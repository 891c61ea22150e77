#pragma once

#include "host/db/PfDbHandle.h"

#include <QWidget>

#include <vector>

class PfDbDatabase;
class PfDbElement;
class QLabel;
class QTableWidget;
class QTableWidgetItem;

// The selected element's properties: its name and transparency, which the
// planner edits in place (each edit one undo step), and what it is, where it
// stands and what its source model said about it, read only. A selection of
// several elements shows how many.
class KvxElementProperties : public QWidget {
    Q_OBJECT
public:
    explicit KvxElementProperties(QWidget* parent = nullptr);

    void ShowElements(PfDbDatabase* database, const std::vector<PfDbHandle>& ids);
    // Shows the element shown again (after undo or redo).
    void Refresh();

    QTableWidget* Table() const { return m_table; }
    // The row of a property by its label; -1 when it is not shown.
    int RowOf(const QString& label) const;

signals:
    // The element was changed by an edit here.
    void ElementChanged(PfDbHandle id);

private:
    void addRow(const QString& label, const QString& value, bool editable = false);
    void fill(const PfDbElement* element);
    void edited(QTableWidgetItem* item);
    void rename(PfDbElement* element, const QString& name);
    void setTransparency(PfDbElement* element, const QString& percent);

    PfDbDatabase* m_database = nullptr;
    std::vector<PfDbHandle> m_ids;
    QLabel* m_summary = nullptr;
    QTableWidget* m_table = nullptr;
    bool m_filling = false;
};
