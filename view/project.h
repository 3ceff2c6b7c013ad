// The project that the window shows: its settings, where they are kept, and who reads its tags.
#pragma once

#include "host/driver_library.h"
#include "host/project/named_tag_reader.h"
#include "host/project/project_settings.h"

#include <QTemporaryDir>

#include <memory>

namespace kmr {

// The driver's library twice. It has one object a loaded file: the thread of the line has that of
// the first, and the window may ask the second at any time, for tags and for poll plans.
class Drivers {
public:
    // Loads `path`, or what findDriver() finds if it is empty. Throws Error (Library).
    explicit Drivers(const QString &path);

    const DriverFunctions &forLine() const
    {
        return m_line->functions();
    }
    const DriverFunctions &forQuestions() const
    {
        return m_questions->functions();
    }

private:
    QTemporaryDir m_folder; // of the copy
    std::unique_ptr<DriverLibrary> m_line;
    std::unique_ptr<DriverLibrary> m_questions;
};

// Reads tags as the project has them. Throws Error (Usage) when its names can't be read.
NamedTagReader tagReaderOf(const ProjectSettings &settings, const Drivers &drivers);

} // namespace kmr
