// Writes the seed corpus of every harness into a folder per harness: real frames and files made by the
// project's own encoders (the protocol's requests, the virtual tracker's answers, the boot loader's
// messages, firmware images) and the golden files of tests/data.
#include "tests/fuzz/FuzzSupport.h"
#include "tests/update/BskBuilder.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/SectionTable.h"
#include "Devices/VantorConfiguration.h"
#include "pages/GsmProfileStore.h"
#include "protocol/Frame.h"
#include "protocol/UNPProtocol.h"
#include "tools/devsim/BootLoader.h"
#include "tools/devsim/VirtualTracker.h"
#include "update/UpdateChannel.h"

#include <QDir>
#include <QFile>

#include <cstdio>

namespace {

QString root;
int written = 0;

void seed(const char *harness, const QString &name, const QByteArray &content) {
    const QString dir = root + QLatin1Char('/') + QLatin1String(harness);
    QDir().mkpath(dir);
    QFile file(dir + QLatin1Char('/') + name);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size())
        ++written;
}

QByteArray readFile(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Every request the configurator sends: each section's reads and writes, each telemetry
// poll and each command.
QList<QByteArray> requests(VantorConfiguration &configuration) {
    proto::UNPProtocol p(&configuration);
    for (const kd::Section &section : kd::sections()) {
        p.readSection(section.key);
        p.writeSection(section.key);
    }
    p.readGsmBlock3(1);
    for (quint8 subCode : proto::UNPProtocol::telemetrySubCodes())
        p.readTelemetry(subCode);
    p.readCode9();
    p.writeCode9();
    p.setOutputs();
    p.setOutput(1, 0);
    p.login(1234);
    p.changePassword(4321);
    p.resetSettings();
    p.clearMemory();
    p.enterFirmwareUpdate();
    return p.queue();
}

} // namespace

int main(int argc, char *argv[]) {
    QCoreApplication app(argc, argv);
    qInstallMessageHandler(fuzz::quiet);
    if (argc != 3) {
        std::fprintf(stderr, "usage: tavrel-fuzz-seeds OUTPUT-FOLDER TESTS-DATA-FOLDER\n");
        return 2;
    }
    root = QString::fromLocal8Bit(argv[1]);
    const QString data = QString::fromLocal8Bit(argv[2]);

    VirtualTracker tracker;
    tracker.setClock([] { return qint64(60000); });
    const QList<QByteArray> sent = requests(*tracker.configuration());
    QByteArray allRequests, allAnswers;
    int n = 0;
    for (const QByteArray &request : sent) {
        const proto::Frame::Received r = proto::Frame::check(request);
        const QString name = QStringLiteral("%1").arg(n++, 2, 10, QLatin1Char('0'));
        seed("requests", name, fuzz::chunkRecord(request));
        seed("decode", name + QStringLiteral("-request"), "1700000000 Command " + request.toHex());
        allRequests += fuzz::chunkRecord(request);
        int a = 0;
        for (const QByteArray &answer : tracker.handle(r.type, r.payload)) {
            const QString answerName = name + QStringLiteral("-%1").arg(a++);
            const proto::Frame::Received ar = proto::Frame::check(answer);
            seed("session", answerName, fuzz::chunkRecord(answer));
            seed("parser", answerName, char(ar.type) + ar.payload);
            seed("decode", answerName,
                 "1700000000 From device: " + answer.toHex() + ": " + QByteArray::number(answer.size()));
            allAnswers += fuzz::chunkRecord(answer);
        }
    }
    seed("requests", "all", allRequests);
    seed("session", "all", allAnswers);
    // One answer in two reads, and two answers in one read.
    const QByteArray first = fuzz::chunks(allAnswers).value(0), second = fuzz::chunks(allAnswers).value(1);
    seed("session", "split", fuzz::chunkRecord(first.left(5)) + fuzz::chunkRecord(first.mid(5)));
    seed("session", "joined", fuzz::chunkRecord(first + second));
    // The deframer: whole streams of both directions, a frame behind garbage, an answer cut over three reads.
    seed("deframer", "answers", allAnswers);
    seed("deframer", "requests", allRequests);
    seed("deframer", "garbage", fuzz::chunkRecord(QByteArray::fromHex("0102a5ff") + first + second));
    seed("deframer", "three",
         fuzz::chunkRecord(first.left(3)) + fuzz::chunkRecord(first.mid(3, 5)) +
             fuzz::chunkRecord(first.mid(8)));

    // The boot loader's messages: its first page request, then confirmations, a damaged page, the end.
    BootLoader::Options options;
    BootLoader loader(options);
    QByteArray loaderTalk;
    QObject::connect(&loader, &BootLoader::send, [&](const QByteArray &bytes) { loaderTalk += bytes; });
    loader.start();
    auto message = [&](quint8 kind, quint16 page) {
        return UpdateChannel::encodeMessage(
            {kind, options.hwVersion, options.fwMiddle, options.fwBuild, options.fwMajor, page});
    };
    seed("bootloader", "start", fuzz::chunkRecord(loaderTalk));
    // The loader's first request right behind the device's last answer, in the same read.
    seed("deframer", "loader", fuzz::chunkRecord(first + loaderTalk));
    QByteArray talk = fuzz::chunkRecord(message(UpdateChannel::PageRequested, 0));
    for (quint16 page = 0; page < 4; ++page)
        talk += fuzz::chunkRecord(message(UpdateChannel::PageConfirmed, page) +
                                  message(UpdateChannel::PageRequested, page + 1));
    seed("bootloader", "transfer", talk);
    seed("bootloader", "error",
         fuzz::chunkRecord(message(UpdateChannel::PageError, 0)) +
             fuzz::chunkRecord(message(UpdateChannel::PageRequested, 0)));

    BskBuilder image;
    for (int pages : {1, 2, 3}) {
        image.pages = pages;
        image.builds = QVector<quint16>(pages, quint16(16 + pages));
        image.hardware = QVector<quint16>(pages, quint16(0x1200 + pages));
        seed("firmwarefile", QStringLiteral("pages-%1.bsk").arg(pages), image.build());
    }

    seed("configfile", "sample.json", readFile(data + "/devices/sample-configuration.json"));
    seed("configfile", "write-config.json", readFile(data + "/cli/write-config.json"));
    seed("configfile", "tracker.json", kd::ConfigurationFile::toJson(*tracker.configuration()));

    const QString profiles = root + QStringLiteral("/gsmprofiles/GSMprofileList.json");
    QDir().mkpath(root + QStringLiteral("/gsmprofiles"));
    GsmProfileStore store(profiles);
    store.add({QStringLiteral("МТС"), QStringLiteral("internet.mts.ru"), QStringLiteral("mts"),
               QStringLiteral("mts")});
    store.add({QStringLiteral("Билайн"), QStringLiteral("internet.beeline.ru"), QStringLiteral("beeline"),
               QString()});
    written += QFile::exists(profiles) ? 1 : 0;

    seed("updateanswer", "one",
         "<updates><update name=\"Tavrel\" version=\"1.0.0.31\" size=\"48213\"/></updates>");
    seed("updateanswer", "none", "<updates><!-- no updates --></updates>");
    seed("updateanswer", "two",
         "<?xml version=\"1.0\"?>\n<updates>\n <update name=\"A\" version=\"1\" size=\"2\"/>\n"
         " <update name=\"B\" version=\"1.2\" size=\"30\"/>\n</updates>\n");
    seed("networksettings", "network.xml",
         "<Network><ProxyType>2</ProxyType><Username>ivan</Username><Password>p</Password></Network>");
    seed("networksettings", "bare.xml", "<?xml version=\"1.0\"?><Network/>");

    std::printf("%d seeds in %s\n", written, qPrintable(root));
    return written > 0 ? 0 : 1;
}
