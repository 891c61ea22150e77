#pragma once

#include "PfDbHandle.h"
#include "PfDbSelectionSet.h"

#include <QString>

#include <memory>

class PfDbDatabase;
class PfDbObject;
class PfGsView;

// An open document: its database, the file it came from, the selection and
// the highlighted set.
class PfDbDocument {
public:
    enum OpenMode { kForRead = 0, kForWrite = 1 };

    PfDbDocument();
    PfDbDocument(std::unique_ptr<PfDbDatabase> database, const QString& filePath);
    ~PfDbDocument();
    PfDbDocument(const PfDbDocument&) = delete;
    PfDbDocument& operator=(const PfDbDocument&) = delete;

    PfDbDatabase* GetDatabase() const { return m_database.get(); }
    // Null for an unknown or erased id. Opening for write inside a
    // transaction records the object's state for undo.
    PfDbObject* GetItem(PfDbHandle id, OpenMode mode = kForRead) const;

    // The view the document is shown in; null until one is attached.
    PfGsView* GetActiveView() const { return m_activeView.get(); }
    void SetActiveView(std::unique_ptr<PfGsView> view);

    PfDbSelectionSet& GetSelectionSet() { return m_selection; }
    PfDbSelectionSet& GetHighlightedSet() { return m_highlighted; }

    const QString& FilePath() const { return m_filePath; }
    // Minutes between the application's automatic saves of the document; 0
    // turns them off (an editor that must not be interrupted by a save does
    // so for a while).
    int GetAutoSaveMinutes() const { return m_autoSaveMinutes; }
    void SetAutoSaveMinutes(int minutes) { m_autoSaveMinutes = minutes < 0 ? 0 : minutes; }
    // Whether long jobs on this document report their progress as lines on
    // the command prompt rather than in the status bar's progress meter.
    bool GetPromptOnly() const { return m_promptOnly; }
    void SetPromptOnly(bool promptOnly) { m_promptOnly = promptOnly; }
    // Writes the document atomically; on success it remembers the path.
    bool Save(const QString& filePath, QString* error = nullptr);

private:
    std::unique_ptr<PfDbDatabase> m_database;
    // Declared after the database: the view is a reactor of it and goes first.
    std::unique_ptr<PfGsView> m_activeView;
    QString m_filePath;
    PfDbSelectionSet m_selection;
    PfDbSelectionSet m_highlighted;
    int m_autoSaveMinutes = 10;
    bool m_promptOnly = false;
};
