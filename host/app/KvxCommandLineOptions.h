#pragma once

#include <QString>
#include <QStringList>

#include <osg/Vec3d>

// The options of one kvxhost command line, read and checked against what its
// command takes: an option the command does not take, a value that is not
// one, or two options that contradict each other are bad usage.
struct KvxCommandLineOptions {
    QString command;
    QString input;
    // import, read-model, 4d: the building model file.
    QString model;
    // schedule, 4d: the schedule file, and the rules that link it.
    QString schedule;
    QString rules;
    QString out;
    bool sizeGiven = false;
    int width = 1280;
    int height = 720;
    QString secondsPerDay;
    QString poster;
    bool hasCamera = false;
    QString cameraText;
    osg::Vec3d eye;
    osg::Vec3d target;
    QString view;
    QString addTime;
    QString deleteTime;
    QString date;
    QString title;
    bool caption = true;
    bool force = false;
    bool help = false;
    // live
    QString endpoint;
    QString header;
    QString seconds;
    // crane-sim
    int port = -1;
    QString script;
    int delay = 0;
    int failEvery = 0;
    bool damaged = false;

    // The commands, in the order the help lists them.
    static QStringList Commands();
    // Whether the command takes a document as its first argument.
    static bool TakesDocument(const QString& command);
    // Whether it takes a model file (after the document, if any).
    static bool TakesModel(const QString& command);
    // Reads the arguments (without the program name); false with the reason.
    bool Parse(const QStringList& arguments, QString& error);
};
