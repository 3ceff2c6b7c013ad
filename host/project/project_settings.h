// What a project's file kmr.toml says, as values: for whoever opens a project without a command
// line, and saves one.
#pragma once

#include "host/line/link.h"
#include "host/session/session.h"
#include "host/tags/tag_syntax.h"

#include <QString>
#include <QStringList>

#include <chrono>

namespace kmr {

// Here the values that hold when the file says nothing else.
struct ProjectSettings {
    QString link;   // as typed; empty: none
    QString driver; // path of the library; empty: findDriver()
    int station = MIN_STATION;
    std::chrono::milliseconds timeout{1000}; // 1 to 600000
    int retries = 2;                         // 0 to 1000
    int groupLimit = 8;                      // 1 to 8
    std::chrono::milliseconds gap{0};        // 0 to 60000
    EchoMode echo = EchoMode::Auto;
    bool inStep = true;
    WordOrder wordOrder = WordOrder::LowFirst;
    ByteOrder byteOrder = ByteOrder::LowFirst;
    QString format; // of the command's records; kept for it
    QString names;  // path of the file of names; empty: none
    QStringList tags;
};

// Reads a file's text; `path` names it and is where its relative paths begin. Throws Error (Usage)
// that names every bad key with its line; the sections of commands are left alone.
ProjectSettings parseProject(const QString &text, const QString &path);

// Reads a file. Throws Error (Usage).
ProjectSettings readProject(const QString &path);

// The text of a file at `path` that says all that differs from the values above. Files below its
// folder are named relative to it.
QString formatProject(const ProjectSettings &settings, const QString &path);

// How a session on the link at `address` is to be run.
SessionSettings sessionSettingsOf(const ProjectSettings &settings, const LinkAddress &address);

} // namespace kmr
