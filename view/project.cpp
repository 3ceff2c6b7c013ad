#include "view/project.h"

#include "host/error.h"
#include "host/project/text_file.h"

#include <QCoreApplication>
#include <QFile>

namespace kmr {

Drivers::Drivers(const QString &path)
{
    const QString place =
        path.isEmpty() ? findDriver(QCoreApplication::applicationDirPath()) : path;
    m_line = std::make_unique<DriverLibrary>(place);
    const QString copy = m_folder.filePath("driver.so");
    if (!QFile::copy(m_line->fileName(), copy)) {
        throw Error(ErrorKind::Library,
                    QCoreApplication::translate("Drivers",
                                                "%1 could not be copied to %2, where it is loaded "
                                                "a second time: is there room?")
                        .arg(m_line->fileName(), copy));
    }
    m_questions = std::make_unique<DriverLibrary>(copy);
}

NamedTagReader tagReaderOf(const ProjectSettings &settings, const Drivers &drivers)
{
    TagReader reader(drivers.forQuestions(), settings.station, settings.wordOrder,
                     settings.byteOrder);
    if (settings.names.isEmpty())
        return NamedTagReader(reader);
    return NamedTagReader(reader, NameTable::parse(readTextFile(settings.names), settings.names));
}

} // namespace kmr
