#include "view/translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QStringList>
#include <QTranslator>

namespace kmr {

namespace {

bool install(const QString &name, const QString &folder)
{
    auto *translator = new QTranslator(QCoreApplication::instance());
    const bool isFound = translator->load(QLocale(), name, "_", folder);
    if (isFound)
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
    return isFound;
}

} // namespace

void useLanguageOfLocale(const QString &folder)
{
    install("qtbase", QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    const QString program = QCoreApplication::applicationDirPath();
    for (const QString &place : {folder, program, program + "/../share/kmr-view/translations"}) {
        if (!place.isEmpty() && install("kmr-view", place))
            return;
    }
}

} // namespace kmr
