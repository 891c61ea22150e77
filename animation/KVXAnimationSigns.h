#pragma once

#include "host/vpe/core/CReferenced.h"
#include "host/vpe/scene/CGroupNode.h"

#include <QString>
#include <QtGlobal>

#include <map>

class KVXAnimation;
class KVXRecordIndex;

namespace vpe {
class CVectorText2D;
}

// The labels over animated elements: one screen-facing text per element that
// lists the numbers of its records ("[2][5]"), all under one group in the
// current viewer's scene, so that they show and hide as a whole.
class KVXAnimationSigns {
public:
    explicit KVXAnimationSigns(const KVXRecordIndex& records);
    ~KVXAnimationSigns();

    // Makes or updates the label of that record's element (its place stays
    // where it was first put).
    void Add(int number);
    // The label without that record, or none when it was the element's last.
    void Delete(int number);
    void Remove(qint64 objId);
    // A fresh group with a label for every animated element.
    void Reset();
    // The group leaves the scene with every label in it.
    void Drop();
    void SetVisible(bool visible);
    bool IsVisible() const;
    vpe::CVectorText2D* Find(qint64 objId) const;
    vpe::CGroupNode* GroupNode() const { return m_group.get(); }
    QString Text(const KVXAnimation* record, bool includeSelf) const;

private:
    // The group, made and put into the current viewer's scene when needed.
    vpe::CGroupNode* groupNode();

    const KVXRecordIndex& m_manager;
    vpe::CRefPtr<vpe::CGroupNode> m_group;
    std::map<qint64, vpe::CRefPtr<vpe::CVectorText2D>> m_byObjId;
};
