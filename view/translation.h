// The language of the window.
#pragma once

#include <QString>

namespace kmr {

// Has the application speak the language of the locale, if there is a translation: of this window
// beside the program or where it is installed, of Qt's own texts where Qt is. `folder`: where to
// look first.
void useLanguageOfLocale(const QString &folder = QString());

} // namespace kmr
