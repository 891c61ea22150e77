#pragma once

#include "host/db/PfDbHandle.h"

#include <QDate>
#include <QString>

// What a linked schedule task asks of the animation module for one element:
// how the element comes or goes and on which days. The host links tasks to
// elements; the module makes the records. It crosses between them as one
// word of a module command.
struct PfTaskRecord {
    enum Kind { Construction, Demolition, Emphasis, Layered };

    PfDbHandle element = kPfDbNullHandle;
    Kind kind = Construction;
    // The first and the last working day, both included.
    QDate start, finish;
    // For layered construction, the layer's height in millimetres.
    double layerHeight = 0.0;
    // The task's key in its schedule: what a record remembers so that a
    // changed schedule imported again moves it instead of adding another.
    QString taskId;
    QString taskName;

    QString ToWord() const;
    // False when the word is not one ToWord wrote.
    static bool FromWord(const QString& word, PfTaskRecord& record);
    static QString KindName(Kind kind);

    // The record properties that keep the task.
    static const QString kTaskIdProperty;
    static const QString kTaskNameProperty;
};
