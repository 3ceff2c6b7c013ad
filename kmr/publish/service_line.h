// The line of a service, which is begun when the machine is, maybe long before its line.
#pragma once

#include "kmr/connection.h"
#include "kmr/publish/service_notice.h"

#include <QString>

#include <functional>

namespace kmr {

// Opens the connection's line. As a service it tries again, with pauses that grow, until that works
// or the end is asked for; `report` takes a line for a person about it. Throws Error.
Session &openLine(Connection &connection, ServiceNotice &notice,
                  const std::function<void(const QString &)> &report);

} // namespace kmr
