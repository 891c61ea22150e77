#pragma once

#include <QStandardItemModel>

#include <vector>

class KVXAnimation;

// The rows of the animation sequence: one animation each, three columns
// (number, the animated element's name, the kind), computed from the
// records when asked; rows of animations in conflict are red.
class KVXAnimationModel : public QStandardItemModel {
    Q_OBJECT
public:
    explicit KVXAnimationModel(QObject* parent = nullptr);
    ~KVXAnimationModel() override;

    std::vector<KVXAnimation*>& animations() { return m_animations; }
    const std::vector<KVXAnimation*>& animations() const { return m_animations; }
    // The animation of a row; null past the list.
    KVXAnimation* animationAt(int row) const;

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    std::vector<KVXAnimation*> m_animations;
};
