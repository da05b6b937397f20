// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagecommandline.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

std::variant<ImageCommand, Information, UsageError> parse(const QStringList &arguments)
{
    return parseImageCommandLine(QStringList("corvane-image") + arguments);
}

} // namespace

class ImageCommandLineTest : public QObject {
    Q_OBJECT

private slots:
    void readsPack_data()
    {
        QTest::addColumn<QStringList>("arguments");

        QTest::newRow("options first") << QStringList{
            "--protocol-version", "1.2.0.7", "--image-version", "1.0.0.6", "pack", "in", "out"};
        QTest::newRow("options after the command") << QStringList{
            "pack", "--image-version=1.0.0.6", "--protocol-version=1.2.0.7", "in", "out"};
        QTest::newRow("options last") << QStringList{
            "pack", "in", "out", "--protocol-version", "1.2.0.7", "--image-version", "1.0.0.6"};
    }

    void readsPack()
    {
        QFETCH(QStringList, arguments);
        const auto command = std::get<ImageCommand>(parse(arguments));
        QVERIFY(command.kind == ImageCommand::Kind::Pack);
        QCOMPARE(command.input, QString("in"));
        QCOMPARE(command.output, QString("out"));
        QVERIFY((command.protocolVersion == ImageVersion{1, 2, 0, 7}));
        QVERIFY((command.imageVersion == ImageVersion{1, 0, 0, 6}));
    }

    void readsTheOtherCommands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("output");

        const int info = static_cast<int>(ImageCommand::Kind::Info);
        const int unpack = static_cast<int>(ImageCommand::Kind::Unpack);
        const int verify = static_cast<int>(ImageCommand::Kind::Verify);
        QTest::newRow("info") << QStringList{"info", "a"} << info << "a" << QString();
        QTest::newRow("verify") << QStringList{"verify", "a"} << verify << "a" << QString();
        QTest::newRow("unpack") << QStringList{"unpack", "a", "b"} << unpack << "a"
                                << "b";
        QTest::newRow("standard input and output")
            << QStringList{"unpack", "-", "-"} << unpack << "-"
            << "-";
        QTest::newRow("names that look like options")
            << QStringList{"unpack", "--", "--help", "-v"} << unpack << "--help"
            << "-v";
        QTest::newRow("missing files, which are not the same")
            << QStringList{"unpack", "/nowhere/a", "/nowhere/b"} << unpack << "/nowhere/a"
            << "/nowhere/b";
    }

    void readsTheOtherCommands()
    {
        QFETCH(QStringList, arguments);
        const auto command = std::get<ImageCommand>(parse(arguments));
        QTEST(static_cast<int>(command.kind), "kind");
        QTEST(command.input, "input");
        QTEST(command.output, "output");
    }

    void informs_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("part");

        QTest::newRow("help") << QStringList{"--help"} << "Exit codes:";
        QTest::newRow("short help") << QStringList{"-h"} << "  unpack  Write the bytes";
        QTest::newRow("how the upload time is reckoned")
            << QStringList{"--help"} << "50 ms for each packet and 50 ms for the\nannouncement";
        QTest::newRow("help of pack")
            << QStringList{"pack", "--help"} << " [options] pack FIRMWARE IMAGE\n";
        QTest::newRow("help of info") << QStringList{"info", "-h"} << " [options] info IMAGE\n";
        QTest::newRow("the upload time in the help of info")
            << QStringList{"info", "-h"} << "50 ms for each packet";
        QTest::newRow("help of unpack")
            << QStringList{"--help", "unpack"} << " [options] unpack IMAGE FIRMWARE\n";
        QTest::newRow("help of verify")
            << QStringList{"verify", "a", "--help"} << " [options] verify IMAGE\n";
        QTest::newRow("exit codes in the help of a command")
            << QStringList{"verify", "--help"} << "\n  3  a file could not be read";
        QTest::newRow("version") << QStringList{"--version"} << "tst_imagecommandline 1.2.3\n";
        QTest::newRow("version beside a command")
            << QStringList{"info", "-v"} << "tst_imagecommandline 1.2.3\n";
    }

    void informs()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, part);
        QCoreApplication::setApplicationVersion("1.2.3");
        const QString text = std::get<Information>(parse(arguments)).text;
        QVERIFY2(text.contains(part), qPrintable(text));
    }

    void refusesBadUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");

        const QStringList versions{"--protocol-version", "1.2.3.4", "--image-version", "1.2.3.4"};
        QTest::newRow("nothing") << QStringList()
                                 << "a command is needed: pack, info, unpack or verify";
        QTest::newRow("unknown command")
            << QStringList{"list", "a"}
            << "'list' is no command; they are pack, info, unpack and verify";
        QTest::newRow("command in capitals")
            << QStringList{"INFO", "a"}
            << "'INFO' is no command; they are pack, info, unpack and verify";
        QTest::newRow("unknown option")
            << QStringList{"info", "--nope", "a"} << "Unknown option 'nope'.";
        QTest::newRow("option of another command")
            << QStringList{"info", "--image-version", "1.2.3.4", "a"}
            << "Unknown option 'image-version'.";
        QTest::newRow("missing value")
            << QStringList{"pack", "--image-version"} << "Missing value after '--image-version'.";
        QTest::newRow("no file") << QStringList{"info"} << "info takes one file: IMAGE";
        QTest::newRow("two files")
            << QStringList{"verify", "a", "b"} << "verify takes one file: IMAGE";
        QTest::newRow("one file of two")
            << QStringList{"unpack", "a"} << "unpack takes two files: IMAGE FIRMWARE";
        QTest::newRow("three files") << QStringList{"pack", "a", "b", "c"} + versions
                                     << "pack takes two files: FIRMWARE IMAGE";
        QTest::newRow("empty input") << QStringList{"info", ""} << "the name of a file is empty";
        QTest::newRow("empty output")
            << QStringList{"unpack", "a", ""} << "the name of a file is empty";
        QTest::newRow("no protocol version")
            << QStringList{"pack", "a", "b"} + versions.mid(2) << "--protocol-version is needed";
        QTest::newRow("no image version")
            << QStringList{"pack", "a", "b"} + versions.mid(0, 2) << "--image-version is needed";
        QTest::newRow("bad protocol version")
            << QStringList{"pack", "a", "b", "--protocol-version", "1"} + versions.mid(2)
            << "--protocol-version is four numbers from 0 to 255 with dots, not '1'";
        QTest::newRow("bad image version")
            << QStringList{"pack", "a", "b", "--image-version", "1"} + versions.mid(0, 2)
            << "--image-version is four numbers from 0 to 255 with dots, not '1'";
    }

    void refusesBadUsage()
    {
        QFETCH(QStringList, arguments);
        QTEST(std::get<UsageError>(parse(arguments)).reason, "reason");
    }

    void refusesToReplaceTheInput()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("a.img"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QFile::link(file.fileName(), folder.filePath("link")));
        for (const QString &other :
             {file.fileName(), folder.filePath("./a.img"), folder.filePath("link")}) {
            QCOMPARE(std::get<UsageError>(parse({"unpack", file.fileName(), other})).reason,
                     QString("IMAGE and FIRMWARE are the same file"));
        }
    }
};

QTEST_GUILESS_MAIN(ImageCommandLineTest)

#include "tst_imagecommandline.moc"
