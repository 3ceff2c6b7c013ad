// kmr --version.
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

ExitCode runVersion(const Options &options)
{
    print(QString("kmr %1, Qt %2").arg(KMR_VERSION, qVersion()));
    try {
        const QString path = loadDriver(options)->fileName();
        print(QString("driver %1, Qt %2").arg(path, qtVersionOf(path)));
    } catch (const Error &error) {
        print("no driver: " + error.text());
    }
    return ExitCode::Ok;
}

} // namespace kmr
