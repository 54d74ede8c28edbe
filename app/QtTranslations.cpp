#include "app/QtTranslations.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QStringList>
#include <QTranslator>

bool installQtTranslations(QCoreApplication &app) {
    const QLocale russian(QLocale::Russian, QLocale::Russia);
    // Beside the executable first (a deployed Windows installation), then Qt's own folder.
    const QStringList folders{QCoreApplication::applicationDirPath() + QStringLiteral("/translations"),
                              QLibraryInfo::location(QLibraryInfo::TranslationsPath)};
    for (const QString &folder : folders) {
        auto *translator = new QTranslator(&app);
        if (translator->load(russian, QStringLiteral("qtbase"), QStringLiteral("_"), folder)) {
            app.installTranslator(translator);
            return true;
        }
        delete translator;
    }
    return false;
}
