#pragma once

#include <QObject>

class KVXAnimation;

// Tells the forms that records were edited (a form's edit ended, or an
// undo or redo replayed one), so that what they show can follow.
class KVXRecordEditNotifier : public QObject {
    Q_OBJECT
public:
    static KVXRecordEditNotifier* Get();

signals:
    void recordsEdited();
};

// One user edit of a record as one step of its document's undo: a
// transaction from construction to destruction, the record opened for
// writing. Edits that set off further edits nest into the same step. A
// record outside any document is simply written. The outermost edit's end
// is announced through KVXRecordEditNotifier.
class KVXRecordEdit {
public:
    explicit KVXRecordEdit(KVXAnimation* record);
    ~KVXRecordEdit();
    KVXRecordEdit(const KVXRecordEdit&) = delete;
    KVXRecordEdit& operator=(const KVXRecordEdit&) = delete;

    // How many edits are open now, this one included: an edit set off by
    // another runs inside it.
    static int Depth();

private:
    KVXAnimation* m_record;
    bool m_inTransaction = false;
};
