#pragma once

#include "PfImportedProduct.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

// Reads a building model file into products, one at a time. A reader is
// used once, for one file.
class PfModelReader {
public:
    // Gets each product as it is read.
    using Take = std::function<void(PfImportedProduct&& product)>;
    // How far the reading is: products done of those found (found may be 0
    // while still unknown).
    using Progress = std::function<void(int done, int found)>;

    struct Summary {
        // The products of the file that could have a shape.
        int found = 0;
        // Handed over.
        int read = 0;
        // Why the others were not: "IfcSpace: 12", "no shape: 3", …
        QStringList skipped;
    };

    virtual ~PfModelReader() = default;

    // False with a one-line reason (damaged file, unknown format, unreadable)
    // when the file could not be read at all; products already taken then
    // are to be dropped.
    virtual bool Read(const QString& path, const Take& take, const Progress& progress, Summary& summary,
                      QString* error) = 0;
};
