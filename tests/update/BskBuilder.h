#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QVector>

// Builds ".bsk" firmware images in memory so that tests need no binary files in the repository.
struct BskBuilder {
    QByteArray magic = QByteArray("BOOT2FILE\0", 10);
    int pages = 2;
    int pageSize = 520;
    quint16 versionNumber = 918;
    quint16 middle = 9;
    quint8 kept = 0;
    quint8 major = 3;
    QVector<quint16> builds{17};
    QVector<quint16> hardware{0x1203};
    quint16 crc = 0xBEEF;
    int pagesWritten = -1; // pages actually present in the file (-1: all)

    // Page n's bytes: a pattern that differs from page to page.
    static QByteArray pageData(int n) {
        QByteArray p(520, '\0');
        for (int i = 0; i < p.size(); ++i)
            p[i] = char((n * 7 + i) & 0xFF);
        return p;
    }

    static void putU16(QByteArray &b, quint16 v) {
        b.append(char(v & 0xFF));
        b.append(char(v >> 8));
    }

    // The header and version lists up to and including the checksum word, no filler.
    QByteArray head() const {
        QByteArray b = magic.left(10).leftJustified(10, '\0');
        b.append(2, '\0');
        putU16(b, quint16(pages));
        putU16(b, quint16(pageSize));
        putU16(b, versionNumber);
        putU16(b, middle);
        b.append(char(kept));
        b.append(char(major));
        putU16(b, quint16(builds.size()));
        putU16(b, quint16(hardware.size()));
        for (quint16 v : builds)
            putU16(b, v);
        for (quint16 v : hardware)
            putU16(b, v);
        putU16(b, crc);
        return b;
    }

    QByteArray build() const {
        QByteArray b = head();
        if (b.size() < 520)
            b.append(520 - b.size(), char(0xFF));
        const int n = pagesWritten < 0 ? pages : pagesWritten;
        for (int i = 0; i < n; ++i)
            b.append(pageData(i));
        return b;
    }

    static bool write(const QString &fileName, const QByteArray &bytes) {
        QFile f(fileName);
        return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
    }
};
