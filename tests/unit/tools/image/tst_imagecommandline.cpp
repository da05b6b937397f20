// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagecommandline.h"
#include "rows.h"

static std::variant<ImageCommand, Information, UsageError> parse(const QStringList &arguments)
{
    return parseImageCommandLine(QStringList("corvane-image") + arguments);
}

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
        const int info = static_cast<int>(ImageCommand::Kind::Info);
        const int unpack = static_cast<int>(ImageCommand::Kind::Unpack);
        const int verify = static_cast<int>(ImageCommand::Kind::Verify);
        addRows<QStringList, int, QString, QString>(
            {"arguments", "kind", "input", "output"},
            {{"info", {"info", "a"}, info, "a", {}},
             {"verify", {"verify", "a"}, verify, "a", {}},
             {"unpack", {"unpack", "a", "b"}, unpack, "a", "b"},
             {"standard input and output", {"unpack", "-", "-"}, unpack, "-", "-"},
             {"names that look like options",
              {"unpack", "--", "--help", "-v"},
              unpack,
              "--help",
              "-v"},
             {"missing files, which are not the same",
              {"unpack", "/nowhere/a", "/nowhere/b"},
              unpack,
              "/nowhere/a",
              "/nowhere/b"}});
    }

    void readsTheOtherCommands()
    {
        QFETCH(QStringList, arguments);
        const auto command = std::get<ImageCommand>(parse(arguments));
        QTEST(static_cast<int>(command.kind), "kind");
        QTEST(command.input, "input");
        QTEST(command.output, "output");
    }

    void readsTheExpectedSha256()
    {
        const QString hash = QString(58, '0') + "aBcDeF";
        QCOMPARE(std::get<ImageCommand>(parse({"verify", "a", "--sha256", hash})).sha256,
                 QByteArray(58, '0') + "abcdef");
        QCOMPARE(std::get<ImageCommand>(parse({"verify", "a"})).sha256, QByteArray());
    }

    void informs_data()
    {
        addRows<QStringList, QString>(
            {"arguments", "part"},
            {{"help", {"--help"}, "Exit codes:"},
             {"short help", {"-h"}, "  unpack  Write the bytes"},
             {"how the upload time is reckoned",
              {"--help"},
              "50 ms for each packet and 50 ms for the\nannouncement"},
             {"help of pack", {"pack", "--help"}, " [options] pack FIRMWARE IMAGE\n"},
             {"help of info", {"info", "-h"}, " [options] info IMAGE\n"},
             {"the upload time in the help of info", {"info", "-h"}, "50 ms for each packet"},
             {"help of unpack", {"--help", "unpack"}, " [options] unpack IMAGE FIRMWARE\n"},
             {"help of verify", {"verify", "a", "--help"}, " [options] verify IMAGE\n"},
             {"exit codes in the help of a command",
              {"verify", "--help"},
              "\n  3  a file could not be read"},
             {"version", {"--version"}, "tst_imagecommandline 1.2.3\n"},
             {"version beside a command", {"info", "-v"}, "tst_imagecommandline 1.2.3\n"}});
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
        const QStringList versions{"--protocol-version", "1.2.3.4", "--image-version", "1.2.3.4"};
        addRows<QStringList, QString>(
            {"arguments", "reason"},
            {{"nothing", {}, "a command is needed: pack, info, unpack or verify"},
             {"unknown command",
              {"list", "a"},
              "'list' is no command; they are pack, info, unpack and verify"},
             {"command in capitals",
              {"INFO", "a"},
              "'INFO' is no command; they are pack, info, unpack and verify"},
             {"unknown option", {"info", "--nope", "a"}, "unknown option '--nope'"},
             {"option of another command",
              {"info", "--image-version", "1.2.3.4", "a"},
              "unknown option '--image-version'"},
             {"missing value",
              {"pack", "--image-version"},
              "Missing value after '--image-version'."},
             {"SHA-256 of another command",
              {"info", "--sha256", QString(64, '0'), "a"},
              "unknown option '--sha256'"},
             {"short SHA-256",
              {"verify", "--sha256", QString(63, '0'), "a"},
              "--sha256 is 64 hexadecimal digits, not '" + QString(63, '0') + "'"},
             {"SHA-256 with a foreign letter",
              {"verify", "--sha256", QString(63, '0') + 'g', "a"},
              "--sha256 is 64 hexadecimal digits, not '" + QString(63, '0') + "g'"},
             {"no file", {"info"}, "info takes one file: IMAGE"},
             {"two files", {"verify", "a", "b"}, "verify takes one file: IMAGE"},
             {"one file of two", {"unpack", "a"}, "unpack takes two files: IMAGE FIRMWARE"},
             {"three files", QStringList{"pack", "a", "b", "c"} + versions,
              "pack takes two files: FIRMWARE IMAGE"},
             {"empty input", {"info", ""}, "the name of a file is empty"},
             {"empty output", {"unpack", "a", ""}, "the name of a file is empty"},
             {"no protocol version", QStringList{"pack", "a", "b"} + versions.mid(2),
              "--protocol-version is needed"},
             {"no image version", QStringList{"pack", "a", "b"} + versions.mid(0, 2),
              "--image-version is needed"},
             {"bad protocol version",
              QStringList{"pack", "a", "b", "--protocol-version", "1"} + versions.mid(2),
              "--protocol-version is four numbers from 0 to 255 with dots, not '1'"},
             {"bad image version",
              QStringList{"pack", "a", "b", "--image-version", "1"} + versions.mid(0, 2),
              "--image-version is four numbers from 0 to 255 with dots, not '1'"}});
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
        // Windows knows links by their names.
        QVERIFY(QFile::link(file.fileName(), folder.filePath("a.lnk")));
        for (const QString &other :
             {file.fileName(), folder.filePath("./a.img"), folder.filePath("a.lnk")}) {
            QCOMPARE(std::get<UsageError>(parse({"unpack", file.fileName(), other})).reason,
                     QString("IMAGE and FIRMWARE are the same file"));
        }
    }
};

QTEST_GUILESS_MAIN(ImageCommandLineTest)

#include "tst_imagecommandline.moc"
