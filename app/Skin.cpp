#include "app/Skin.h"

#include "app/AppSettings.h"

#include <QApplication>
#include <QFile>

QString Skin::resourceFor(int skin) {
    switch (skin) {
    case Light:
        return QStringLiteral(":/css/style.css");
    case Dark:
        return QStringLiteral(":/css/styleBlack.css");
    default:
        return QString();
    }
}

QString Skin::sheetText(const QByteArray &bytes) {
    const int end = bytes.indexOf('\0');
    return QString::fromLatin1(end < 0 ? bytes : bytes.left(end));
}

bool applySkin(QApplication *app, int skin) {
    const QString path = Skin::resourceFor(skin);
    if (path.isEmpty() || !app)
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    app->setStyleSheet(Skin::sheetText(file.readAll()));
    return true;
}

bool applyStoredSkin(QApplication *app) {
    return applySkin(app, AppSettings().skinName());
}
