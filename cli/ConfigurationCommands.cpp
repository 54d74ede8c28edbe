#include "cli/ConfigurationCommands.h"

#include "cli/CliOptions.h"
#include "cli/ConfigurationSource.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/ConfigurationFileCheck.h"
#include "Devices/SnapshotStore.h"
#include "Devices/VantorConfiguration.h"

#include <QDir>
#include <QTextStream>

void printChanges(const kd::ConfigurationDiff &diff, QTextStream &stream) {
    for (const QString &line : diff.plainLines())
        stream << line << '\n';
}

int loadWriteSource(const CliOptions &options, ConfigurationSource *source, QTextStream &err) {
    QString error;
    if (!ConfigurationSource::load(options.file, source, &error)) {
        err << QStringLiteral("tavrel-cli: ") << error << '\n';
        return 2;
    }
    const bool restoring = options.command == CliOptions::Command::Restore;
    if (restoring != (source->kind == ConfigurationSource::Kind::Snapshot)) {
        err << QStringLiteral("tavrel-cli: %1 - %2")
                   .arg(options.file,
                        restoring ? QStringLiteral("не снимок настроек (для файла конфигурации: write)")
                                  : QStringLiteral("снимок настроек (для него: restore)"))
            << '\n';
        return 2;
    }
    if (restoring)
        return -1;
    const kd::ConfigurationFileCheck check = kd::ConfigurationFileCheck::check(source->root);
    if (check.ok())
        return -1;
    for (const QString &line : check.lines())
        err << QStringLiteral("tavrel-cli: ") << line << '\n';
    if (check.empty) {
        err << QStringLiteral("tavrel-cli: файл %1 не записан").arg(options.file) << '\n';
        return 2;
    }
    if (options.force) {
        err << QStringLiteral("tavrel-cli: --force: значения будут записаны так, как их прочитает программа")
            << '\n';
        return -1;
    }
    err << QStringLiteral(
               "tavrel-cli: файл %1 не записан; --force запишет значения так, как их прочитает программа")
               .arg(options.file)
        << '\n';
    return 2;
}

int diffCommand(const CliOptions &options, QTextStream &out, QTextStream &err) {
    ConfigurationSource a, b;
    QString error;
    if (!ConfigurationSource::load(options.diffA, &a, &error) ||
        !ConfigurationSource::load(options.diffB, &b, &error)) {
        err << QStringLiteral("tavrel-cli: ") << error << '\n';
        return 2;
    }
    VantorConfiguration before, after;
    a.fill(before);
    b.fill(after);
    const kd::ConfigurationDiff diff = kd::ConfigurationDiff::compare(before, after);
    printChanges(diff, out);
    return diff.isEmpty() ? 0 : 1;
}

int historyCommand(const CliOptions &options, QTextStream &out, QTextStream &err) {
    const kd::SnapshotStore store;
    QStringList damaged;
    const QVector<kd::Snapshot> list = store.list(options.imeiArgument, &damaged);
    for (const QString &line : damaged)
        err << QStringLiteral("tavrel-cli: снимок пропущен: ") << line << '\n';
    if (list.isEmpty()) {
        err << QStringLiteral("tavrel-cli: снимков прибора %1 нет (%2)")
                   .arg(options.imeiArgument, QDir::toNativeSeparators(store.folder()))
            << '\n';
        return 1;
    }
    for (const kd::Snapshot &s : list) {
        out << QDir::toNativeSeparators(s.filePath) << '\t' << s.time.toLocalTime().toString(Qt::ISODate)
            << '\t' << QStringLiteral("версия %1").arg(s.programVersion) << '\t' << s.summary() << '\n';
        for (const QString &line : s.writtenLines())
            out << QStringLiteral("    ") << line << '\n';
    }
    return 0;
}
