// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"

#include <memory>

namespace {

// 35 bytes.
QByteArray firmware()
{
    return "0123456789abcdef0123456789ABCDEFABC";
}

QByteArray image()
{
    return QByteArray("KVEL\x01\x02\x00\x07\x01\x00\x00\x06", 12) + QByteArray(116, '\0')
        + "0123456789abcdef0123456789ABCDEFQUJD";
}

QByteArray report()
{
    return "Magic: KVEL\n"
           "Protocol version: 1.2.0.7 (decimal 1.2.0.7)\n"
           "Image version: 1.0.0.6 (decimal 1.0.0.6)\n"
           "File size: 164 bytes\n"
           "Firmware size: 35 bytes\n"
           "Packets: 1\n"
           "Upload time: 0 min 0.10 s\n"
           "SHA-256 of the firmware: "
           "d77a178473cf2bf0a832092bfb6e9204f556c2bf8d38916ce7fc13dfc1255e3d\n";
}

// Of image().
QByteArray imageSha256()
{
    return "86b1e3fa4ca159973fe9fabfe73e682c4364e67684acd466849c803c6ac60e0c";
}

QStringList pack(const QString &input, const QString &output)
{
    return {"pack", "--protocol-version", "1.2.0.7", "--image-version", "1.0.0.6", input, output};
}

/// How a run of the program ended.
struct Outcome {
    int exitCode; ///< -1 when it crashed or did not end
    QByteArray output;
    QByteArray errors;
};

Outcome finish(QProcess &process)
{
    if (!process.waitForFinished(kPatience)) {
        process.kill();
        process.waitForFinished(kPatience);
        return {-1, "did not end", {}};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class ImageProgramTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        put("good.img", image());
        put("-", image());
        put("bad.img", image() + "*");
        put("firmware", firmware());
    }

    void cleanup() { m_folder.reset(); }

    void obeysEachCommand_data()
    {
        const QByteArray none;
        addRows<QStringList, QByteArray, QByteArray>(
            {"arguments", "input", "output"},
            {{"pack", pack("firmware", "-"), none, image()},
             {"pack a pipe", pack("-", "-"), firmware(), image()},
             {"info", {"info", "good.img"}, none, report()},
             {"info on a pipe", {"info", "-"}, image(), report()},
             {"unpack", {"unpack", "good.img", "-"}, none, firmware()},
             {"unpack a pipe", {"unpack", "-", "-"}, image(), firmware()},
             {"verify",
              {"verify", "good.img"},
              none,
              "good.img: well-formed, 164 bytes, SHA-256 " + imageSha256() + "\n"},
             {"verify a pipe",
              {"verify", "-"},
              image(),
              "-: well-formed, 164 bytes, SHA-256 " + imageSha256() + "\n"},
             {"verify against a SHA-256",
              {"verify", "good.img", "--sha256", imageSha256().toUpper()},
              none,
              "good.img: well-formed, 164 bytes, SHA-256 " + imageSha256() + "\n"}});
    }

    void obeysEachCommand()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, input);
        const Outcome outcome = run(arguments, input);
        QCOMPARE(outcome.errors, QByteArray());
        QTEST(outcome.output, "output");
        QCOMPARE(outcome.exitCode, 0);
    }

    void writesAFile_data()
    {
        addRows<QStringList, QByteArray, QByteArray>(
            {"arguments", "input", "contents"},
            {{"pack", pack("firmware", "new"), {}, image()},
             {"pack a pipe", pack("-", "new"), firmware(), image()},
             {"unpack", {"unpack", "good.img", "new"}, {}, firmware()},
             {"unpack a file called -", {"unpack", "./-", "new"}, {}, firmware()},
             {"unpack a pipe", {"unpack", "-", "new"}, image(), firmware()}});
    }

    void writesAFile()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, input);
        const Outcome outcome = run(arguments, input);
        QCOMPARE(outcome.errors, QByteArray());
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.exitCode, 0);
        QTEST(contentsOf("new"), "contents");
    }

    void replacesAFile()
    {
        put("old", QByteArray(1000, 'x'));
        QCOMPARE(run({"unpack", "good.img", "old"}).exitCode, 0);
        QCOMPARE(contentsOf("old"), firmware());
    }

    void keepsWhatWasThereWhenTheInputIsNotRight_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("errors");

        const QByteArray foreign = R"(offset 164: "*" (2a) is not a base64 character)";
        const QByteArray none;
        QTest::newRow("unpack") << QStringList{"unpack", "bad.img", "old"} << none
                                << "corvane-image: bad.img: " + foreign + "\n";
        QTest::newRow("unpack to the standard output")
            << QStringList{"unpack", "bad.img", "-"} << none
            << "corvane-image: bad.img: " + foreign + "\n";
        QTest::newRow("unpack a pipe") << QStringList{"unpack", "-", "old"} << image() + "*"
                                       << "corvane-image: -: " + foreign + "\n";
        QTest::newRow("info") << QStringList{"info", "bad.img"} << none
                              << "corvane-image: bad.img: " + foreign + "\n";
        QTest::newRow("verify") << QStringList{"verify", "bad.img"} << none
                                << "corvane-image: bad.img: " + foreign + "\n";
        QTest::newRow("verify what is no image")
            << QStringList{"verify", "firmware"} << none
            << QByteArray("corvane-image: firmware: offset 0: the magic is \"0123\" (30 31 32 33), "
                          "not \"KVEL\"\n");
        QTest::newRow("verify a header cut short")
            << QStringList{"verify", "-"} << image().left(100)
            << QByteArray(
                   "corvane-image: -: offset 100: the file ends here, shorter than the header "
                   "of 128 bytes\n");
        QTest::newRow("verify a firmware that is missing")
            << QStringList{"verify", "-"} << image().left(128)
            << QByteArray("corvane-image: -: offset 128: the firmware is empty\n");
        QTest::newRow("unpack a firmware that is missing")
            << QStringList{"unpack", "-", "old"} << image().left(128)
            << QByteArray("corvane-image: -: offset 128: the firmware is empty\n");
        QTest::newRow("pack nothing")
            << pack("-", "old") << none
            << QByteArray("corvane-image: -: offset 0: the firmware is empty\n");
        QTest::newRow("verify what was cut off after a whole group")
            << QStringList{"verify", "-", "--sha256", imageSha256()} << image().left(160)
            << QByteArray(
                   "corvane-image: -: well-formed, but its SHA-256 is "
                   "1ebf4471afa5227e86ef785e78c9d34743fac879c36904d6f79d98bf26445c51: another "
                   "file, or a part of the file\n");
        QTest::newRow("pack 16 MiB")
            << pack("-", "old") << QByteArray(16777216, 'x')
            << QByteArray("corvane-image: -: offset 16777215: too large: a "
                          "firmware has at most 16777215 bytes\n");
    }

    void keepsWhatWasThereWhenTheInputIsNotRight()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, input);
        put("old", "precious");
        const QStringList before = QDir(m_folder->path()).entryList();
        const Outcome outcome = run(arguments, input);
        QTEST(outcome.errors, "errors");
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.exitCode, 1);
        QCOMPARE(contentsOf("old"), QByteArray("precious"));
        QCOMPARE(QDir(m_folder->path()).entryList(), before);
    }

    void tellsFilesItCannotRead_data()
    {
        addRows<QStringList, QByteArray>(
            {"arguments", "errors"},
            {{"missing",
              {"info", "none.img"},
              "corvane-image: none.img: No such file or directory\n"},
             {"missing firmware", pack("none", "old"),
              "corvane-image: none: No such file or directory\n"},
             {"folder", {"verify", "."}, "corvane-image: .: is a folder, not a file\n"},
             {"pipe", {"verify", "pipe"}, "corvane-image: pipe: is a pipe, not a file\n"},
             {"link to a pipe", {"info", "link"}, "corvane-image: link: is a pipe, not a file\n"},
             {"device",
              {"unpack", "/dev/zero", "old"},
              "corvane-image: /dev/zero: is a device, not a file\n"},
             {"device to pack", pack("/dev/zero", "old"),
              "corvane-image: /dev/zero: is a device, not a file\n"},
             {"in a file",
              {"verify", "good.img/x"},
              "corvane-image: good.img/x: Not a directory\n"},
             {"fails while it is read",
              {"unpack", "/proc/self/mem", "old"},
              "corvane-image: /proc/self/mem: Input/output error\n"}});
    }

    void tellsFilesItCannotRead()
    {
        QFETCH(QStringList, arguments);
        put("old", "precious");
        QCOMPARE(QProcess::execute("mkfifo", {path("pipe")}), 0);
        QVERIFY(QFile::link(path("pipe"), path("link")));
        const Outcome outcome = run(arguments);
        QTEST(outcome.errors, "errors");
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(contentsOf("old"), QByteArray("precious"));
    }

    void tellsFilesItCannotWrite_data()
    {
        addRows<QString, QByteArray>(
            {"output", "errors"},
            {{"folder", ".", "corvane-image: .: is a folder, not a file\n"},
             {"in a folder that is missing", "none/new",
              "corvane-image: none/new: No such file or directory\n"},
             {"in a file", "good.img/new", "corvane-image: good.img/new: Not a directory\n"}});
    }

    void tellsFilesItCannotWrite()
    {
        QFETCH(QString, output);
        const QStringList before = QDir(m_folder->path()).entryList();
        for (const QStringList &arguments :
             {QStringList{"unpack", "good.img", output}, pack("firmware", output)}) {
            const Outcome outcome = run(arguments);
            QTEST(outcome.errors, "errors");
            QCOMPARE(outcome.exitCode, 3);
        }
        QCOMPARE(QDir(m_folder->path()).entryList(), before);
    }

    void keepsWhatWasThereWhenTheDiskIsFull_data()
    {
        addRows<int, int>({"size", "room"},
                          {{"far too large", 1000000, 32768},
                           {"larger than what is buffered", 40000, 32768},
                           {"smaller than what is buffered", 1000, 500},
                           {"by its last byte", 35, 163}});
    }

    void keepsWhatWasThereWhenTheDiskIsFull()
    {
        QFETCH(int, size);
        QFETCH(int, room);
        put("large", QByteArray(size, 'x'));
        put("old", "precious");
        const QStringList before = QDir(m_folder->path()).entryList();
        QProcess process;
        process.setWorkingDirectory(m_folder->path());
        // A limit on the size of files stands in for a full disk; its signal would kill the
        // program.
        const QString limited = QString(R"(trap "" XFSZ; exec prlimit --fsize=%1 "$@")").arg(room);
        process.start("sh", QStringList{"-c", limited, "sh", IMAGE_PROGRAM} + pack("large", "old"));
        const Outcome outcome = finish(process);
        QCOMPARE(outcome.errors, QByteArray("corvane-image: old: File too large\n"));
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(contentsOf("old"), QByteArray("precious"));
        QCOMPARE(QDir(m_folder->path()).entryList(), before);
    }

    // A new file in its place would take a device away from everybody else.
    void doesNotReplaceWhatIsNoRegularFile()
    {
        QCOMPARE(QProcess::execute("mkfifo", {path("pipe")}), 0);
        const Outcome outcome = run({"unpack", "good.img", "pipe"});
        QCOMPARE(outcome.errors, QByteArray("corvane-image: pipe: is a pipe, not a file\n"));
        QCOMPARE(outcome.exitCode, 3);
        QVERIFY(!QFileInfo(path("pipe")).isFile());
        QVERIFY(QFileInfo::exists(path("pipe")));
    }

    void stopsReadingAnEndlessInput_data()
    {
        const QByteArray tooLarge =
            "offset 16777215: too large: a firmware has at most 16777215 bytes\n";
        addRows<QStringList, QByteArray>(
            {"arguments", "errors"},
            {{"pack the standard input", pack("-", "new"), "corvane-image: -: " + tooLarge},
             {"verify the standard input",
              {"verify", "-"},
              "corvane-image: -: offset 0: the magic is \"....\" (00 00 00 00), not \"KVEL\"\n"}});
    }

    void stopsReadingAnEndlessInput()
    {
        QFETCH(QStringList, arguments);
        QProcess process;
        process.setWorkingDirectory(m_folder->path());
        process.setStandardInputFile("/dev/zero");
        process.start(IMAGE_PROGRAM, arguments);
        const Outcome outcome = finish(process);
        QTEST(outcome.errors, "errors");
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY(!QFileInfo::exists(path("new")));
    }

    void refusesAnImageThatIsTooLarge()
    {
        put("large.img", image() + QByteArray(22369576, 'A'));
        const Outcome outcome = run({"verify", "large.img"});
        QCOMPARE(
            outcome.errors,
            QByteArray("corvane-image: large.img: offset 22369738: too large: a firmware has at "
                       "most 16777215 bytes\n"));
        QCOMPARE(outcome.exitCode, 1);
    }

    void stopsWithABadCommandLine()
    {
        const Outcome outcome = run({"pack", "firmware", "new"});
        QCOMPARE(outcome.errors,
                 QByteArray("corvane-image: --protocol-version is needed\nTry --help.\n"));
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY(!QFileInfo::exists(path("new")));
    }

    void informs_data()
    {
        addRows<QStringList, QByteArray>(
            {"arguments", "part"},
            {{"help", {"--help"}, "Exit codes:\n  0  all is well\n"},
             {"help of a command", {"pack", "--help"}, "--protocol-version <A.B.C.D>"},
             {"version", {"--version"}, "corvane-image 1."}});
    }

    void informs()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, part);
        const Outcome outcome = run(arguments);
        QVERIFY2(outcome.output.contains(part), outcome.output.constData());
        QCOMPARE(outcome.errors, QByteArray());
        QCOMPARE(outcome.exitCode, 0);
    }

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    void put(const QString &name, const QByteArray &contents) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(contents), contents.size());
    }

    QByteArray contentsOf(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "no file " + name.toUtf8();
    }

    /// Runs the program in the test's folder.
    Outcome run(const QStringList &arguments, const QByteArray &input = QByteArray()) const
    {
        QProcess process;
        process.setWorkingDirectory(m_folder->path());
        process.start(IMAGE_PROGRAM, arguments);
        process.write(input);
        process.closeWriteChannel();
        return finish(process);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(ImageProgramTest)

#include "tst_imageprogram.moc"
