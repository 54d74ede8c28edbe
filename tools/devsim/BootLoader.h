#pragma once

#include <QByteArray>
#include <QObject>

class QTimer;

// The virtual device's boot loader: once started it asks for page 0, checks every page packet's checksum,
// confirms good pages in order, reports damaged ones and asks again, and finishes after confirming page 511.
// Like a real loader it repeats its request when the configurator goes quiet.
class BootLoader : public QObject {
    Q_OBJECT
public:
    struct Options {
        quint16 hwVersion = 0x1203;
        quint8 fwMajor = 3;
        quint16 fwMiddle = 9;
        quint8 fwBuild = 17;
        int corruptEvery = 0; // damage the checksum of every Nth message of our own (0: never)
        int retryMs = 500;    // repeat the pending request after this much silence
    };

    explicit BootLoader(const Options &options, QObject *parent = nullptr);

    void start();
    void receive(const QByteArray &bytes);
    bool active() const { return m_active; }
    int expectedPage() const { return m_expected; }
    // The pages received intact, slot n = page n (for checking what was written).
    QByteArray receivedPage(int n) const;
    int messagesSent() const { return m_messages; }

signals:
    void send(const QByteArray &bytes);
    void finished();

private:
    void sendMessage(quint8 kind, int page);
    void handlePacket(const QByteArray &packet);
    void retry();

    Options m_options;
    QTimer *m_retryTimer;
    QByteArray m_buffer;
    QVector<QByteArray> m_pages;
    QByteArray m_lastGood; // the last message, intact, for repeating after a damaged one
    int m_expected = 0;
    int m_messages = 0;
    bool m_active = false;
    bool m_progress = false;
    bool m_rerequested = false;
    bool m_finishPending = false;
};
