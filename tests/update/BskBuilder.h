#pragma once

#include <QByteArray>
#include <QDataStream>
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

    // The header and version lists up to and including the checksum word, no filler.
    QByteArray head() const {
        QByteArray b = magic.left(10).leftJustified(10, '\0');
        QDataStream s(&b, QIODevice::Append);
        s.setByteOrder(QDataStream::LittleEndian);
        s << quint16(0) << quint16(pages) << quint16(pageSize) << versionNumber << middle << kept << major
          << quint16(builds.size()) << quint16(hardware.size());
        for (quint16 v : builds + hardware)
            s << v;
        s << crc;
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
