#include "cli/CliOptions.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <cmath>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <termios.h>
#include <unistd.h>
#endif

namespace {

struct CommandInfo {
    CliOptions::Command command;
    int defaultDeadlineMs;
};

const QHash<QString, CommandInfo> &commands() {
    // Deadlines cover the whole command including retries of unanswered requests; read and write carry a
    // dozen requests each. The firmware transfer runs as long as the loader keeps asking for pages: its
    // time is the longest silence it tolerates.
    static const QHash<QString, CommandInfo> table{
        {QStringLiteral("ports"), {CliOptions::Command::Ports, 0}},
        {QStringLiteral("info"), {CliOptions::Command::Info, 15000}},
        {QStringLiteral("read"), {CliOptions::Command::Read, 60000}},
        {QStringLiteral("write"), {CliOptions::Command::Write, 60000}},
        {QStringLiteral("diff"), {CliOptions::Command::Diff, 60000}},
        {QStringLiteral("history"), {CliOptions::Command::History, 0}},
        {QStringLiteral("restore"), {CliOptions::Command::Restore, 60000}},
        {QStringLiteral("telemetry"), {CliOptions::Command::Telemetry, 20000}},
        {QStringLiteral("reset"), {CliOptions::Command::Reset, 15000}},
        {QStringLiteral("clear-memory"), {CliOptions::Command::ClearMemory, 15000}},
        {QStringLiteral("set-password"), {CliOptions::Command::SetPassword, 15000}},
        {QStringLiteral("decode"), {CliOptions::Command::Decode, 0}},
        {QStringLiteral("fwinfo"), {CliOptions::Command::FwInfo, 0}},
        {QStringLiteral("flash"), {CliOptions::Command::Flash, 120000}},
        {QStringLiteral("batch"), {CliOptions::Command::Batch, 0}},
        {QStringLiteral("bundle"), {CliOptions::Command::Bundle, 60000}},
        {QStringLiteral("help"), {CliOptions::Command::Help, 0}},
    };
    return table;
}

const QStringList &valueOptions() {
    static const QStringList list{
        QStringLiteral("--port"),     QStringLiteral("--remote"),        QStringLiteral("--imei"),
        QStringLiteral("--password"), QStringLiteral("--password-file"), QStringLiteral("--log"),
        QStringLiteral("--timeout"),  QStringLiteral("--output"),        QStringLiteral("-o"),
        QStringLiteral("--template"), QStringLiteral("--overrides"),     QStringLiteral("--flash"),
        QStringLiteral("--ports"),    QStringLiteral("--report"),        QStringLiteral("--wait"),
        QStringLiteral("--csv"),      QStringLiteral("--window")};
    return list;
}

bool parseUnsigned32(const QString &text, quint32 *value) {
    bool ok = false;
    const qulonglong v = text.toULongLong(&ok, 10);
    if (!ok || v > 0xFFFFFFFFull || text.startsWith(QLatin1Char('+')))
        return false;
    *value = quint32(v);
    return true;
}

QString quoted(const QString &text) {
    return QStringLiteral("«%1»").arg(text);
}

// One line from stdin; on a terminal the prompt goes to stderr and the typed characters are not echoed.
QByteArray promptPassword() {
#ifdef Q_OS_UNIX
    termios saved = {};
    const bool terminal = ::isatty(STDIN_FILENO) && ::tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal) {
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
        std::fputs("Пароль: ", stderr);
        std::fflush(stderr);
    }
#endif
    QByteArray line;
    int c = 0;
    while ((c = std::getchar()) != EOF && c != '\n' && line.size() < 64)
        line.append(char(c));
#ifdef Q_OS_UNIX
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        std::fputs("\n", stderr);
    }
#endif
    return line.trimmed();
}

} // namespace

bool CliOptions::needsDevice() const {
    switch (command) {
    case Command::Info:
    case Command::Read:
    case Command::Write:
    case Command::Restore:
    case Command::Telemetry:
    case Command::Reset:
    case Command::ClearMemory:
    case Command::SetPassword:
    case Command::Flash:
    case Command::Batch:
    case Command::Bundle:
        return true;
    case Command::Diff:
        return diffA == QLatin1String("device") || diffB == QLatin1String("device");
    default:
        return false;
    }
}

int CliOptions::deadlineMs() const {
    if (timeoutMs > 0)
        return timeoutMs;
    const auto it = commands().constFind(commandName);
    return it == commands().constEnd() ? 0 : it->defaultDeadlineMs;
}

QString CliOptions::parse(const QStringList &argv) {
    QStringList positional;
    QString output;
    bool outputGiven = false;
    QStringList commandFlags; // command-specific options seen, checked against the command afterwards

    for (int i = 0; i < argv.size(); ++i) {
        QString arg = argv.at(i);
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            command = Command::Help;
            return {};
        }
        if (arg == QLatin1String("--version")) {
            command = Command::Version;
            return {};
        }
        if (arg == QLatin1String("--")) {
            positional += argv.mid(i + 1);
            break;
        }
        if (!arg.startsWith(QLatin1Char('-')) || arg.size() == 1) {
            positional << arg;
            continue;
        }

        QString value;
        bool inlineValue = false;
        const int eq = arg.indexOf(QLatin1Char('='));
        if (arg.startsWith(QLatin1String("--")) && eq > 0) {
            value = arg.mid(eq + 1);
            arg = arg.left(eq);
            inlineValue = true;
        }

        if (valueOptions().contains(arg)) {
            if (!inlineValue) {
                if (i + 1 >= argv.size())
                    return QStringLiteral("у параметра %1 нет значения").arg(arg);
                value = argv.at(++i);
            }
            if (arg == QLatin1String("--port")) {
                port = value;
            } else if (arg == QLatin1String("--remote")) {
                const int colon = value.lastIndexOf(QLatin1Char(':'));
                bool ok = false;
                const uint p = colon > 0 ? value.mid(colon + 1).toUInt(&ok) : 0;
                if (!ok || p == 0 || p > 65535)
                    return QStringLiteral("адрес сервера %1 не в виде УЗЕЛ:ПОРТ").arg(quoted(value));
                remoteHost = value.left(colon);
                remotePort = quint16(p);
            } else if (arg == QLatin1String("--imei")) {
                imei = value;
            } else if (arg == QLatin1String("--password-file")) {
                passwordFile = value;
            } else if (arg == QLatin1String("--password") && value == QLatin1String("-")) {
                passwordPrompt = true;
            } else if (arg == QLatin1String("--password")) {
                if (!parseUnsigned32(value, &password))
                    return QStringLiteral("пароль %1 не число от 0 до 4294967295").arg(quoted(value));
                hasPassword = true;
            } else if (arg == QLatin1String("--log")) {
                logFile = value;
            } else if (arg == QLatin1String("--timeout")) {
                bool ok = false;
                const double seconds = value.toDouble(&ok);
                if (!ok || !std::isfinite(seconds) || seconds <= 0 || seconds > 86400)
                    return QStringLiteral("время ожидания %1 не число секунд больше нуля").arg(quoted(value));
                timeoutMs = qMax(1, int(std::lround(seconds * 1000)));
            } else if (arg == QLatin1String("--window")) {
                bool ok = false;
                window = value.toInt(&ok);
                if (!ok || window < 1 || window > 255)
                    return QStringLiteral("окно запросов %1 не число от 1 до 255").arg(quoted(value));
            } else if (arg == QLatin1String("--wait")) {
                bool ok = false;
                const double seconds = value.toDouble(&ok);
                if (!ok || !std::isfinite(seconds) || seconds <= 0 || seconds > 86400)
                    return QStringLiteral("время ожидания %1 не число секунд больше нуля").arg(quoted(value));
                waitMs = qMax(1, int(std::lround(seconds * 1000)));
            } else if (arg == QLatin1String("--csv")) {
                csvFile = value;
                commandFlags << arg;
            } else if (arg == QLatin1String("--output") || arg == QLatin1String("-o")) {
                output = value;
                outputGiven = true;
                commandFlags << QStringLiteral("-o");
            } else {
                // The batch's files and ports.
                QString *target = arg == QLatin1String("--template")    ? &templateFile
                                  : arg == QLatin1String("--overrides") ? &overridesFile
                                  : arg == QLatin1String("--flash")     ? &flashFile
                                  : arg == QLatin1String("--ports")     ? &ports
                                                                        : &reportFile;
                *target = value;
                commandFlags << arg;
            }
            continue;
        }
        if (inlineValue)
            return QStringLiteral("параметр %1 не принимает значения").arg(arg);
        if (arg == QLatin1String("--json"))
            json = true;
        else if (arg == QLatin1String("--raw"))
            raw = true;
        else if (arg == QLatin1String("--once"))
            once = true;
        else if (arg == QLatin1String("--watch"))
            watch = true;
        else if (arg == QLatin1String("--dry-run"))
            dryRun = true;
        else if (arg == QLatin1String("--keep-device-values"))
            keepDeviceValues = true;
        else if (arg == QLatin1String("--no-verify"))
            noVerify = true;
        else if (arg == QLatin1String("--force"))
            force = true;
        else if (arg == QLatin1String("--wait-new"))
            waitNew = true;
        else if (arg == QLatin1String("--reconnect"))
            reconnect = true;
        else
            return QStringLiteral("неизвестный параметр %1").arg(quoted(arg));
        commandFlags << arg;
    }

    if (positional.isEmpty())
        return QStringLiteral("не указана команда");
    commandName = positional.takeFirst();
    const auto it = commands().constFind(commandName);
    if (it == commands().constEnd())
        return QStringLiteral("неизвестная команда %1").arg(quoted(commandName));
    command = it->command;
    arguments = positional;

    QStringList allowedFlags;
    switch (command) {
    case Command::Info:
        allowedFlags << QStringLiteral("--json");
        break;
    case Command::Read:
    case Command::Bundle:
        allowedFlags << QStringLiteral("-o");
        break;
    case Command::Telemetry:
        allowedFlags << QStringLiteral("--once") << QStringLiteral("--watch") << QStringLiteral("--raw")
                     << QStringLiteral("--csv");
        break;
    case Command::Write:
    case Command::Restore:
        allowedFlags << QStringLiteral("--dry-run") << QStringLiteral("--keep-device-values")
                     << QStringLiteral("--no-verify") << QStringLiteral("--force");
        break;
    case Command::Batch:
        allowedFlags << QStringLiteral("--template") << QStringLiteral("--overrides")
                     << QStringLiteral("--flash") << QStringLiteral("--ports") << QStringLiteral("--report")
                     << QStringLiteral("--wait-new");
        break;
    case Command::Reset:
    case Command::Flash:
        allowedFlags << QStringLiteral("--reconnect");
        break;
    default:
        break;
    }
    for (const QString &flag : qAsConst(commandFlags)) {
        if (!allowedFlags.contains(flag))
            return QStringLiteral("параметр %1 не относится к команде %2").arg(flag, commandName);
    }

    if (!passwordFile.isEmpty() && (hasPassword || passwordPrompt))
        return QStringLiteral("укажите либо --password, либо --password-file");
    if (!port.isEmpty() && isRemote())
        return QStringLiteral("укажите либо --port, либо --remote");
    if (isRemote() && imei.isEmpty())
        return QStringLiteral("для --remote нужен --imei");
    if (!imei.isEmpty() && !isRemote())
        return QStringLiteral("--imei используется только вместе с --remote");
    if (waitMs > 0 && (!needsDevice() || isRemote() || command == Command::Batch))
        return QStringLiteral("--wait относится к командам с прибором на USB или порту");

    auto expectArguments = [this](int count, const QString &what) -> QString {
        if (arguments.size() < count)
            return QStringLiteral("команде %1 нужен %2").arg(commandName, what);
        if (arguments.size() > count)
            return QStringLiteral("лишний аргумент %1 у команды %2")
                .arg(quoted(arguments.at(count)), commandName);
        return {};
    };

    QString error;
    switch (command) {
    case Command::Read:
    case Command::Bundle:
        if (!outputGiven || output.isEmpty())
            return command == Command::Read ? QStringLiteral("команде read нужен файл: read -o ФАЙЛ.json")
                                            : QStringLiteral("команде bundle нужен файл: bundle -o ФАЙЛ.zip");
        file = output;
        error = expectArguments(0, QString());
        break;
    case Command::Diff:
        error = expectArguments(2, QStringLiteral("два источника: ФАЙЛ, СНИМОК или device"));
        if (error.isEmpty()) {
            diffA = arguments.at(0);
            diffB = arguments.at(1);
        }
        break;
    case Command::History:
        error = expectArguments(1, QStringLiteral("IMEI прибора"));
        if (error.isEmpty())
            imeiArgument = arguments.constFirst();
        break;
    case Command::Write:
    case Command::Restore:
    case Command::FwInfo:
    case Command::Flash:
        error = expectArguments(1, QStringLiteral("файл"));
        if (error.isEmpty())
            file = arguments.constFirst();
        break;
    case Command::SetPassword:
        error = expectArguments(1, QStringLiteral("новый пароль"));
        if (error.isEmpty() && !parseUnsigned32(arguments.constFirst(), &newPassword))
            error =
                QStringLiteral("пароль %1 не число от 0 до 4294967295").arg(quoted(arguments.constFirst()));
        break;
    case Command::Batch:
        if (templateFile.isEmpty() || reportFile.isEmpty())
            return QStringLiteral("команде batch нужны --template ФАЙЛ.json и --report ФАЙЛ.csv");
        if (!port.isEmpty() || isRemote())
            return QStringLiteral("batch выбирает порты параметром --ports");
        error = expectArguments(0, QString());
        break;
    case Command::Decode:
        if (arguments.isEmpty())
            return QStringLiteral("команде decode нужен кадр в шестнадцатеричном виде");
        decodeHex = arguments.join(QLatin1Char(' '));
        break;
    case Command::Telemetry:
        if (once == watch)
            return QStringLiteral("команде telemetry нужен ровно один из параметров --once и --watch");
        error = expectArguments(0, QString());
        break;
    default:
        error = expectArguments(0, QString());
        break;
    }
    return error;
}

QString CliOptions::resolvePassword(const QByteArray &environment) {
    if (!needsDevice() || hasPassword)
        return {};
    QByteArray text;
    QString source;
    if (passwordPrompt) {
        text = promptPassword();
        source = QStringLiteral("введённый пароль");
    } else if (!passwordFile.isEmpty()) {
        QFile file(passwordFile);
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("не удалось прочитать файл пароля %1: %2")
                .arg(passwordFile, file.errorString());
        text = file.readLine(64).trimmed();
        source = QStringLiteral("пароль из файла %1").arg(passwordFile);
    } else if (!environment.isEmpty()) {
        text = environment.trimmed();
        source = QStringLiteral("пароль из TAVREL_PASSWORD");
    } else {
        return {};
    }
    // The value itself is never echoed back: it is a secret.
    if (!parseUnsigned32(QString::fromLatin1(text), &password))
        return QStringLiteral("%1 не число от 0 до 4294967295").arg(source);
    hasPassword = true;
    return {};
}

QString CliOptions::inputFileError() const {
    if (command != Command::Write && command != Command::FwInfo && command != Command::Flash)
        return {};
    const QFileInfo info(file);
    if (!info.exists() || info.isFile())
        return {}; // a missing file is reported by the command that opens it
    return info.isDir()
               ? QStringLiteral("%1 - не файл, а папка").arg(file)
               : QStringLiteral("%1 - не обычный файл (канал или устройство), он не читается").arg(file);
}

QString CliOptions::usageHint() {
    return QStringLiteral("Справка: tavrel-cli --help");
}

QString CliOptions::usage() {
    return QStringLiteral(
        "Использование: tavrel-cli [СВЯЗЬ] [--password N] [--log ФАЙЛ] [--timeout С] КОМАНДА [АРГУМЕНТЫ]\n"
        "\n"
        "Связь (без неё берётся единственный подключенный по USB прибор):\n"
        "  --port ПУТЬ              последовательный порт прибора\n"
        "  --remote УЗЕЛ:ПОРТ --imei IMEI\n"
        "                           прибор за сервером конфигурирования\n"
        "  --password N             пароль, если прибор запросит авторизацию\n"
        "                           (\"-\": спросить без эха; так же TAVREL_PASSWORD)\n"
        "  --password-file ФАЙЛ     пароль из первой строки файла\n"
        "  --log ФАЙЛ               журнал обмена с прибором\n"
        "  --timeout С              предельное время команды в секундах\n"
        "                           (для flash - наибольшая пауза прибора, 120 с)\n"
        "  --window N               запросов на линии одновременно (1 - по одному, ждать ответа)\n"
        "\n"
        "Команды:\n"
        "  ports                    подключенные по USB приборы, по одному в строке\n"
        "  info [--json]            сведения о приборе\n"
        "  read -o ФАЙЛ.json        считать всю конфигурацию в файл\n"
        "  write ФАЙЛ.json [--dry-run] [--keep-device-values] [--no-verify] [--force]\n"
        "                           записать конфигурацию из файла в прибор: изменения - в stderr,\n"
        "                           --dry-run только показать, --keep-device-values оставить значения\n"
        "                           прибора для параметров, которых нет в файле, --no-verify не проверять\n"
        "                           запись чтением, --force записать файл со значениями, которые прибор\n"
        "                           не примет как есть\n"
        "  diff A B                 сравнить: A и B - файл, снимок или device (0 - равны, 1 - различаются)\n"
        "  history IMEI             снимки настроек прибора перед записями\n"
        "  restore СНИМОК [--dry-run] [--no-verify] [--force]\n"
        "                           вернуть прибору настройки из снимка\n"
        "  telemetry --once [--raw] состояние прибора (--raw: записи телеметрии в hex)\n"
        "  telemetry --watch [--raw] [--csv ФАЙЛ.csv]\n"
        "                           состояние прибора раз в секунду до Ctrl+C\n"
        "                           (--csv: строка значений за каждый опрос в файл)\n"
        "  reset                    сбросить настройки на заводские\n"
        "  clear-memory             очистить память\n"
        "  set-password N           сменить пароль прибора\n"
        "  decode HEX...            разобрать кадр из журнала обмена (без прибора)\n"
        "  fwinfo ФАЙЛ.bsk          сведения о файле прошивки\n"
        "  flash ФАЙЛ.bsk           обновить прошивку прибора\n"
        "  batch --template ФАЙЛ.json --report ОТЧЕТ.csv [--overrides ПРИБОРЫ.csv] [--flash ФАЙЛ.bsk]\n"
        "        [--ports all|ПОРТ,ШАБЛОН...] [--wait-new]\n"
        "                           запрограммировать все приборы сразу: прошить, записать, проверить\n"
        "                           чтением; ПРИБОРЫ.csv - строка на прибор по IMEI, столбцы - ключи\n"
        "                           файла (Server[0].server, gsm[0].gprs 1.apn); --ports - порты\n"
        "                           и шаблоны (/tmp/bench-*), иначе приборы по USB; --wait-new - ждать\n"
        "                           новые приборы до Ctrl+C, каждый программируется один раз\n"
        "\n"
        "  --wait С                 ждать появления прибора до С секунд\n"
        "  --reconnect              после reset и flash дождаться прибора и показать сведения о нем\n"
        "  bundle -o ФАЙЛ.zip       отчет для поддержки: сведения, конфигурация, телеметрия,\n"
        "                           журнал обмена и настройки программы без паролей\n"
        "\n"
        "Код завершения: 0 - выполнено, 1 - ошибка прибора или связи, 2 - неверный вызов,\n"
        "10 и больше - файл прошивки не читается (fwinfo, flash); batch - 0, только если все приборы\n"
        "запрограммированы и проверены.\n");
}
