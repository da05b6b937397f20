// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"

#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <memory>

/// What all programs beside the window promise.
class CommandLinesTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        for (const char *const name : {"good.img", "\x1bgood.img", "Grüße ☂.img"}) {
            QFile image(m_folder->filePath(QString::fromUtf8(name)));
            QVERIFY(image.open(QIODevice::WriteOnly));
            // A header and the raw 32 bytes.
            QCOMPARE(image.write("KVEL" + QByteArray(156, 'x')), 160);
        }
    }

    void reportsOutputThatCannotBeWritten_data()
    {
        addRows<QString, int>(
            {"command", "exitCode"},
            {{"image help", "corvane-image --help", 3},
             {"image help of a command", "corvane-image pack --help", 3},
             {"image version", "corvane-image --version", 3},
             {"image pack",
              "corvane-image pack --protocol-version 1.2.3.4 --image-version 1.2.3.4 good.img -",
              3},
             {"image info", "corvane-image info good.img", 3},
             {"image unpack", "corvane-image unpack good.img -", 3},
             {"image verify", "corvane-image verify good.img", 3},
             {"diagnose help", "corvane-diagnose --help", 5},
             {"diagnose version", "corvane-diagnose --version", 5},
             {"diagnose list", "corvane-diagnose --list", 5},
             {"diagnose list as JSON", "corvane-diagnose --list --json", 5},
             {"diagnose", "corvane-diagnose /nowhere", 5},
             {"diagnose as JSON", "corvane-diagnose --json /nowhere", 5},
             {"control help", "corvanectl --help", 4},
             {"control version", "corvanectl --version", 4},
             {"control as JSON", "corvanectl --json info /nowhere", 4},
             {"simulator help", "corvane-simulator --help", 1},
             {"simulator version", "corvane-simulator --version", 1},
             {"simulator help of faults", "corvane-simulator --faults help", 1}});
    }

    void reportsOutputThatCannotBeWritten()
    {
        QFETCH(QString, command);
        const QByteArray program = command.section(' ', 0, 0).toUtf8();
        const Outcome full = run(command + " >/dev/full");
        QCOMPARE(full.errors, program + ": standard output: No space left on device\n");
        QTEST(full.exitCode, "exitCode");
        const Outcome closed = run(command + " >&-");
        QCOMPARE(closed.errors, program + ": standard output: Bad file descriptor\n");
        QTEST(closed.exitCode, "exitCode");
    }

    void simulatesOnWhenTheLogCannotBeWritten()
    {
        QProcess simulator;
        simulator.setStandardOutputFile("/dev/full");
        const QString control = m_folder->filePath("control");
        simulator.start(PROGRAMS "/corvane-simulator", {"--pty", "--control", control});
        QTRY_VERIFY(QFile::exists(control));
        QLocalSocket socket;
        socket.connectToServer(control);
        socket.write("unplug\nplug\nquit\n");
        socket.flush();
        QVERIFY(simulator.waitForFinished(kPatience));
        QCOMPARE(simulator.readAllStandardError(),
                 QByteArray("corvane-simulator: standard output: No space left on device\n"));
        QCOMPARE(simulator.exitCode(), 0);
    }

    void worksWithClosedStreams_data()
    {
        addRows<QString, int, QByteArray, QByteArray>(
            {"command", "exitCode", "output", "errors"},
            {{"image without input",
              "corvane-image info - <&-",
              3,
              {},
              "corvane-image: -: Bad file descriptor\n"},
             {"image without any, for a file",
              "corvane-image unpack good.img new <&- >&- 2>&-; s=$?; cat new; exit $s",
              0,
              QByteArray(32, 'x'),
              {}},
             {"image without a place for errors", "corvane-image verify missing 2>&-", 3, {}, {}},
             {"diagnose without any", "corvane-diagnose /nowhere <&- >&- 2>&-", 5, {}, {}},
             {"control without any", "corvanectl info /nowhere <&- >&- 2>&-", 1, {}, {}},
             {"simulator without any",
              "corvane-simulator --quiet -- sh -c 'for n in 0 1 2; do readlink /proc/$PPID/fd/$n; "
              "done >&3' 3>&1 <&- >&- 2>&-",
              0,
              "/dev/null\n/dev/null\n/dev/null\n",
              {}}});
    }

    void worksWithClosedStreams()
    {
        QFETCH(QString, command);
        const Outcome outcome = run(command);
        QTEST(outcome.errors, "errors");
        QTEST(outcome.output, "output");
        QTEST(outcome.exitCode, "exitCode");
    }

    void escapesNamesFromOutside_data()
    {
        addRows<QString>({"command"},
                         {{"image missing", "corvane-image verify '\x1b'"},
                          {"image valid", "corvane-image verify '\x1bgood.img'"},
                          {"image usage error", "corvane-image '\x1b'"},
                          {"diagnose", "ln -s /dev/null '\x1b'; corvane-diagnose './\x1b'"},
                          {"diagnose usage error", "corvane-diagnose --wait '\x1b' none"},
                          {"control", "corvanectl info '\x1b'"},
                          {"control usage error", "corvanectl '\x1b'"},
                          {"simulator", "corvane-simulator --pty --replay '\x1b'"},
                          {"simulator usage error", "corvane-simulator --pty --baud '\x1b'"}});
    }

    void escapesNamesFromOutside()
    {
        QFETCH(QString, command);
        const Outcome outcome = run(command);
        const QByteArray text = outcome.output + outcome.errors;
        QVERIFY2(text.contains(R"(\x1b)"), text.constData());
        QVERIFY2(!text.contains('\x1b'), text.constData());
    }

    void printsNamesInAnyLetters_data()
    {
        addRows<QString>({"command"},
                         {{"image missing", "corvane-image verify 'Grüße ☂'"},
                          {"image valid", "corvane-image verify 'Grüße ☂.img'"},
                          {"image made", "corvane-image unpack good.img 'Grüße ☂' && ls"},
                          {"image usage error", "corvane-image 'Grüße ☂'"},
                          {"diagnose", "corvane-diagnose './Grüße ☂.img'"},
                          {"diagnose as JSON", "corvane-diagnose --json './Grüße ☂.img'"},
                          {"simulator", "corvane-simulator --pty --replay 'Grüße ☂'"}});
    }

    void printsNamesInAnyLetters()
    {
        QFETCH(QString, command);
        const Outcome outcome = run("export LC_ALL=C.UTF-8; " + command);
        const QByteArray text = outcome.output + outcome.errors;
        QVERIFY2(text.contains("Grüße ☂"), text.constData());
    }

    void namesAnUnknownOptionWithItsDashes_data()
    {
        addRows<QString>({"program"},
                         {{"image", "corvane-image info"},
                          {"diagnose", "corvane-diagnose"},
                          {"simulator", "corvane-simulator"},
                          {"control", "corvanectl info"}});
    }

    void namesAnUnknownOptionWithItsDashes()
    {
        QFETCH(QString, program);
        const QByteArray reason =
            program.section(' ', 0, 0).toUtf8() + ": unknown option '%1'\nTry --help.\n";
        for (const char *const option : {"--frob", "-x"}) {
            const Outcome outcome = run(program + ' ' + option + " none");
            QCOMPARE(outcome.errors, QByteArray(reason).replace("%1", option));
            QCOMPARE(outcome.output, QByteArray());
            QCOMPARE(outcome.exitCode, 2);
        }
    }

    void refusesNamesInAnotherEncoding_data()
    {
        addRows<QString>({"arguments"},
                         {{"image to read", "corvane-image verify"},
                          {"image to write", "corvane-image unpack good.img"},
                          {"port", "corvane-diagnose"},
                          {"recording to write", "corvane-simulator --pty --record"},
                          {"recording to replay", "corvane-simulator --pty --replay"},
                          {"firmware to write", "corvane-simulator --pty --save-firmware"},
                          {"control socket", "corvane-simulator --pty --control"},
                          {"program", "corvane-simulator --"},
                          {"argument of the program", "corvane-simulator -- touch"},
                          {"image to upload", "corvanectl upgrade"},
                          {"settings to write", "corvanectl save port"}});
    }

    // Written as another name, the file would not be where it was asked for.
    void refusesNamesInAnotherEncoding()
    {
        QFETCH(QString, arguments);
        const QStringList before = QDir(m_folder->path()).entryList(QDir::Files | QDir::System);
        const Outcome outcome = run(arguments + " \"$(printf '\\303\\050')\"");
        QCOMPARE(outcome.errors,
                 arguments.section(' ', 0, 0).toUtf8()
                     + ": '\xEF\xBF\xBD(' is not in the character encoding of this locale\n"
                       "Try --help.\n");
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.exitCode, 2);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::System), before);
    }

    void printsHelpWithinEightyColumns_data()
    {
        addRows<QString>({"command"},
                         {{"image", "corvane-image --help"},
                          {"image pack", "corvane-image pack --help"},
                          {"image info", "corvane-image info --help"},
                          {"image unpack", "corvane-image unpack --help"},
                          {"image verify", "corvane-image verify --help"},
                          {"diagnose", "corvane-diagnose --help"},
                          {"control", "corvanectl --help"},
                          {"control set", "corvanectl set --help"},
                          {"control upgrade", "corvanectl upgrade --help"},
                          {"simulator", "corvane-simulator --help"},
                          {"simulator faults", "corvane-simulator --faults help"}});
    }

    void printsHelpWithinEightyColumns()
    {
        QFETCH(QString, command);
        const Outcome outcome = run(command);
        QCOMPARE(outcome.exitCode, 0);
        const QList<QByteArray> lines = outcome.output.split('\n');
        QVERIFY(lines.size() > 5);
        for (const QByteArray &line : lines) {
            QVERIFY2(line.size() <= 80, line.constData());
        }
    }

    void helpSaysWhatNoOptionShows_data()
    {
        addRows<QString, QByteArray>(
            {"command", "words"},
            {{"how the window shows versions", "corvane-image pack --help",
              "in signed hexadecimal: 10 as a, 255 as -1."},
             {"how long the window waits", "corvane-diagnose --help", "Corvane waits for 5."},
             {"faults by probability", "corvane-simulator --faults help",
              "P% Each frame with that probability, such as 2.5%."}});
    }

    void helpSaysWhatNoOptionShows()
    {
        QFETCH(QString, command);
        QFETCH(QByteArray, words);
        const QByteArray help = run(command).output.simplified();
        QVERIFY2(help.contains(words), help.constData());
    }

    // As its manual page says.
    void abortsTheWindowWithoutADisplay_data()
    {
        addRows<QString>({"argument"}, {{"none", ""}, {"one that is not read", " --help"}});
    }

    void abortsTheWindowWithoutADisplay()
    {
        QFETCH(QString, argument);
        const Outcome outcome =
            run("ulimit -c 0; unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM; corvane" + argument);
        QVERIFY2(outcome.errors.contains("could not connect to display"),
                 outcome.errors.constData());
        QCOMPARE(outcome.exitCode, 128 + SIGABRT);
    }

private:
    struct Outcome {
        int exitCode; ///< -1 when it crashed or did not end
        QByteArray output;
        QByteArray errors;
    };

    /// Runs a shell's command in the test's folder.
    Outcome run(const QString &command) const
    {
        QProcess shell;
        shell.setWorkingDirectory(m_folder->path());
        shell.start("sh", {"-c", "PATH=" PROGRAMS ":$PATH; " + command});
        const bool hasEnded = shell.waitForFinished(kPatience);
        return {hasEnded && shell.exitStatus() == QProcess::NormalExit ? shell.exitCode() : -1,
                shell.readAllStandardOutput(), shell.readAllStandardError()};
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(CommandLinesTest)

#include "tst_commandlines.moc"
