// Decodes the commands of Sparkplug B (Eclipse Sparkplug Specification 3.0.0, chapter
// "Payloads", NCMD).
#pragma once

#include "kmr/publish/sparkplug_fields.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

namespace kmr::sparkplug {

// One metric of a command.
struct Command {
    QString name;
    QByteArray values; // as a list in JSON: [21.5]; [null] for what is null or no such value
};

struct CommandPayload {
    bool hasTime = false;
    std::vector<Command> commands;
};

// `typeOf`: the type of the metric with this name, for metrics that come without it, as they
// should. Throws Error (Usage) for what is not such a payload.
CommandPayload parseCommands(const QByteArray &payload,
                             const std::function<DataType(const QString &name)> &typeOf);

} // namespace kmr::sparkplug
