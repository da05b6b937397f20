// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwareimage.h"
#include "rows.h"

#include <QtTest>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

constexpr qint64 kLargestSize = 268435456; // 256 MiB

QByteArray header(const QByteArray &start = "KVEL")
{
    return start.leftJustified(128, '\0');
}

QByteArray rawPrefix()
{
    return "0123456789abcdefghijklmnopqrstuv";
}

/// Base64 once more, bit by bit.
QByteArray decoded(const QByteArray &text)
{
    const QByteArray alphabet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    QByteArray bits;
    for (const char character : text) {
        const int value = alphabet.indexOf(character);
        if (value >= 0) {
            bits += QByteArray::number(value, 2).rightJustified(6, '0');
        }
    }
    QByteArray bytes;
    for (int bit = 0; bit + 8 <= bits.size(); bit += 8) {
        bytes += static_cast<char>(bits.mid(bit, 8).toInt(nullptr, 2));
    }
    return bytes;
}

} // namespace

class FirmwareImageTest : public QObject {
    Q_OBJECT

private slots:
    void knowsItsMagic_data()
    {
        addRows<QByteArray, bool>({"contents", "hasMagic"},
                                  {{"the magic alone", "KVEL", true},
                                   {"the magic and more", header(), true},
                                   {"lower case", header("kvel"), false},
                                   {"one letter other", header("KVEM"), false},
                                   {"after a blank", header(" KVEL"), false},
                                   {"three letters", "KVE", false},
                                   {"three letters and a NUL", QByteArray("KVE\0", 4), false},
                                   {"after a byte order mark", "\xEF\xBB\xBFKVEL", false},
                                   {"a NUL in front", QByteArray("\0KVEL", 5), false},
                                   {"a NUL inside", QByteArray("KV\0EL", 5), false},
                                   {"nothing", QByteArray(), false}});
    }

    void knowsItsMagic()
    {
        QFETCH(QByteArray, contents);
        QTEST(FirmwareImage(contents).hasMagic(), "hasMagic");
    }

    void showsItsVersions_data()
    {
        const auto versions = [](const char *hex) { return "KVEL" + QByteArray::fromHex(hex); };
        addRows<QByteArray, QString, QString>(
            {"contents", "protocolVersion", "imageVersion"},
            {{"each byte its own value", versions("0102030405060708"), "1.2.3.4", "5.6.7.8"},
             {"signed lower-case hexadecimal", versions("01020aff80107f00"), "1.2.a.-1",
              "-80.10.7f.0"},
             {"the magic alone", versions(""), "0.0.0.0", "0.0.0.0"},
             {"5 bytes", versions("01"), "1.0.0.0", "0.0.0.0"},
             {"11 bytes", versions("01020304050607"), "1.2.3.4", "5.6.7.0"}});
    }

    void showsItsVersions()
    {
        QFETCH(QByteArray, contents);
        QTEST(FirmwareImage(contents).protocolVersion(), "protocolVersion");
        QTEST(FirmwareImage(contents).imageVersion(), "imageVersion");
    }

    void yieldsItsFirmware_data()
    {
        const QByteArray whole = header() + rawPrefix();
        addRows<QByteArray, QByteArray>(
            {"contents", "firmware"},
            {{"nothing", QByteArray(), QByteArray()},
             {"less than a header", header().left(127), QByteArray()},
             {"a header alone", header(), QByteArray()},
             {"one byte of the prefix", header() + "x", "x"},
             {"a prefix without a body", whole, rawPrefix()},
             {"the prefix is taken as it is", header() + "QUJD", "QUJD"},
             {"a body without need of padding", whole + "QUJD", rawPrefix() + "ABC"},
             {"a body with its padding", whole + "QUI=", rawPrefix() + "AB"},
             {"a body of 7, padding missing", whole + "QUJDREU", rawPrefix() + "ABCDE"},
             {"a body of 6, padding missing", whole + "QUJDRA", rawPrefix() + "ABCD"},
             {"a body of 5 is decoded as it is", whole + "QUJDR", rawPrefix() + "ABC"},
             {"a body of 1 gives nothing", whole + "Q", rawPrefix()},
             {"foreign characters are skipped", whole + "QU\nJD\r\n -_*REU", rawPrefix() + "ABCDE"},
             {"plus and slash are of the alphabet", whole + "++//",
              rawPrefix() + QByteArray::fromHex("fbefff")},
             {"padding inside is skipped", whole + "QUI=QUJD",
              rawPrefix() + "AB" + QByteArray::fromHex("105090")},
             {"the whole alphabet",
              whole + "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
              rawPrefix()
                  + QByteArray::fromHex("00108310518720928b30d38f41149351559761969b71d79f"
                                        "8218a39259a7a29aabb2dbafc31cb3d35db7e39ebbf3dfbf")},
             {"every byte value may come out", whole + "AAEC/f7/",
              rawPrefix() + QByteArray::fromHex("000102fdfeff")}});
    }

    void yieldsItsFirmware()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QByteArray, firmware);
        QCOMPARE(FirmwareImage(contents).firmware().toHex(), firmware.toHex());
    }

    void takesEveryByteAtEachPlaceOfAGroup()
    {
        for (const char *const group : {"QUJD", "QUJDREVG", "QUJDR", "QUJDRA", "QUJDREU", "QUI="}) {
            for (int place = 0; place < 4; ++place) {
                for (int byte = 0; byte < 256; ++byte) {
                    QByteArray body = group;
                    body[place] = static_cast<char>(byte);
                    const FirmwareImage image(header() + rawPrefix() + body);
                    QCOMPARE(image.firmware().toHex(), (rawPrefix() + decoded(body)).toHex());
                }
            }
        }
    }

    void readsAFileAsItIs()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(header() + rawPrefix() + "QUJD\r\nREVG");
        file.close();
        const auto image = FirmwareImage::read(file.fileName());
        QVERIFY(image.has_value());
        QVERIFY(image->hasMagic());
        QCOMPARE(image->firmware(), rawPrefix() + "ABCDEF");
    }

    void aFileThatCannotBeOpenedIsNone()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("KVEL");
        file.close();
        QVERIFY(FirmwareImage::read(file.fileName()));
        // Permissions would not keep root from opening it.
        rlimit files{};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &files), 0);
        const rlimit none{0, files.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
        const auto image = FirmwareImage::read(file.fileName());
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &files), 0);
        QVERIFY(!image);
    }

    void aFileThatCannotBeReadIsNone()
    {
        // Its first bytes are no memory of this process.
        QVERIFY(!FirmwareImage::read("/proc/self/mem"));
    }

    void readsAFileOfAnyName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("outside ASCII") << QString::fromUtf8("Bündel-カメラ.img");
        QTest::newRow("blanks around") << " image ";
        QTest::newRow("longer than usual") << QString(200, 'n');
    }

    void readsAFileOfAnyName()
    {
        QFETCH(QString, name);
        const QTemporaryDir directory;
        QFile file(directory.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(header());
        file.close();
        QVERIFY(FirmwareImage::read(directory.filePath(name)).has_value());
    }

    void readsAFileOfTheLargestSize()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        QVERIFY(file.resize(kLargestSize)); // takes no room on the disk
        file.close();
        QVERIFY(FirmwareImage::read(file.fileName()).has_value());
    }

    void doesNotReadWhatIsNoFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("an empty path") << "";
        QTest::newRow("a missing file") << "missing";
        QTest::newRow("a directory") << "directory";
        QTest::newRow("a pipe without a writer") << "pipe";
        QTest::newRow("a link to nowhere") << "link";
        QTest::newRow("a file that cannot be held in memory") << "huge";
    }

    void doesNotReadWhatIsNoFile()
    {
        QFETCH(QString, name);
        const QTemporaryDir directory;
        QVERIFY(QDir(directory.path()).mkdir("directory"));
        QCOMPARE(mkfifo(qPrintable(directory.filePath("pipe")), 0600), 0);
        QVERIFY(QFile::link(directory.filePath("nowhere"), directory.filePath("link")));
        QFile huge(directory.filePath("huge"));
        QVERIFY(huge.open(QIODevice::WriteOnly));
        QVERIFY(huge.resize(kLargestSize + 1));
        const QString path = name.isEmpty() ? QString() : directory.filePath(name);
        QVERIFY(!FirmwareImage::read(path).has_value());
    }
};

QTEST_APPLESS_MAIN(FirmwareImageTest)
#include "tst_firmwareimage.moc"
