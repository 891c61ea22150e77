#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>

class PfDbDatabase;
class PfModelReader;

// Brings a building model into a document: every product the reader gives
// becomes one 3D element of the model space (its shells re-wound for
// cutting, its colour, its GlobalId, type, storey and elevation as
// properties), all in one undoable step. Nothing is added when the file
// cannot be read.
class PfModelImport {
public:
    struct Report {
        int found = 0;
        int imported = 0;
        QStringList skipped;
        // Elements with a shell that is not closed: the cut plane still clips
        // them, but a cap is drawn only where their section closes.
        int open = 0;
        int nonManifold = 0;
        std::size_t triangles = 0;

        // "215 elements imported of 240 products (…); skipped: …".
        QString Text() const;
    };

    static bool Import(PfDbDatabase* database, PfModelReader& reader, const QString& path, Report& report,
                       QString* error);
};
