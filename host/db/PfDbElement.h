#pragma once

#include "PfDbEntity.h"

#include <QString>

#include <string>
#include <utility>
#include <vector>

namespace vpe {
class CBody;
}

// A named model element: what a planner picks and lists by name. Besides
// its name it keeps the descriptive properties its source gave it (the keys
// below, and any other), in the order they were set; the model tree groups
// elements by storey and type, and schedules link to them by these.
class PfDbElement : public PfDbEntity {
    PFRX_DECLARE_MEMBERS(PfDbElement)
public:
    using Properties = std::vector<std::pair<QString, QString>>;

    static const QString kGlobalIdProperty;  // the source model's identifier
    static const QString kTypeProperty;      // IfcWall, IfcSlab, or a planner's own word
    static const QString kStoreyProperty;    // the storey's name
    static const QString kElevationProperty; // the storey's elevation in millimetres

    const std::wstring& GetName() const { return m_name; }
    // A character no file can hold (a lone surrogate, NUL) becomes U+FFFD
    // here, so that the name saved is the name shown.
    void SetName(const std::wstring& name);

    // An empty value removes the property.
    void SetProperty(const QString& key, const QString& value);
    QString Property(const QString& key) const;
    const Properties& GetProperties() const { return m_properties; }

    // The element's first solid body; null for elements without bodies (or
    // whose bodies are not made yet).
    virtual vpe::CBody* GetFirstBody() const { return nullptr; }

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    std::wstring m_name;
    Properties m_properties;
};
