// The built driver, loaded once, and tags of its station 1.
#pragma once

#include "host/driver_library.h"
#include "host/tags/tag.h"

namespace kmr {

inline const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

inline Tag tagOf(const QString &text)
{
    return TagReader(library(), 1).read(text);
}

} // namespace kmr
