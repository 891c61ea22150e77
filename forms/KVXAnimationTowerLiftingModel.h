#pragma once

#include "animation/KVXTowerLiftingData.h"

#include <QList>
#include <QStandardItemModel>

class KVXAnimation;

// The jacking rows of a tower crane being edited: a working copy of the
// record's lifting data, three columns (ordinal from 0, date, tower height
// in millimetres). Every edit is checked against the record's days and the
// least tower height; a refused one is explained in an information box.
class KVXAnimationTowerLiftingModel : public QStandardItemModel {
    Q_OBJECT
public:
    // The least tower height, in millimetres.
    static constexpr int kLowestHeight = 10000;
    static const char* const kDateOutOfRange;
    static const char* const kHeightTooLow;

    explicit KVXAnimationTowerLiftingModel(QObject* parent = nullptr);

    void setAnimation(KVXAnimation* animation) { m_animation = animation; }
    // The rows; the row count follows.
    void setLiftingData(const QList<KVXTowerLiftingData>& data);
    const QList<KVXTowerLiftingData>& liftingData() const { return m_data; }
    void appendRow(const KVXTowerLiftingData& row);
    void removeLiftingRow(int row);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    // Whether a jacking date lies within the record's days: from its start
    // to its loop end when it loops, else to its end.
    static bool IsWithinDays(const KVXAnimation* animation, const QDate& date);

private:
    // The information box, over the model's parent widget when it has one.
    void tell(const char* text) const;

    QList<KVXTowerLiftingData> m_data;
    KVXAnimation* m_animation = nullptr;
};
