#pragma once

#include "CTimeSource.h"

#include <map>
#include <string>

namespace vpe {

// The process's named time sources (the video recording's, for instance),
// each held by a lasting reference.
class CTimeSourceManager {
public:
    static CTimeSourceManager* GetInstance();

    CTimeSource* Find(const std::string& name) const;
    // Replaces a source of the same name.
    void Add(const std::string& name, CTimeSource* source);
    void Remove(const std::string& name) { m_sources.erase(name); }

private:
    std::map<std::string, CRefPtr<CTimeSource>> m_sources;
};

} // namespace vpe
