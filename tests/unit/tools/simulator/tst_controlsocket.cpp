// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "controlsocket.h"
#include "patience.h"
#include "rows.h"

#include <QLocalSocket>

#include <memory>

#include <sys/stat.h>

static QByteArray answerTo(QLocalSocket &client, const QByteArray &text)
{
    client.write(text);
    const bool answered = QTest::qWaitFor([&client] { return client.canReadLine(); }, kPatience);
    return answered ? client.readLine() : "no answer";
}

class ControlSocketTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("control");
        m_commands.clear();
    }

    void answersEachCommand()
    {
        const auto control = listening();
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "silent  on \r\n"), QByteArray("ok\n"));
        QCOMPARE(answerTo(client, "bad\n"), QByteArray("error: it is bad\n"));
        QCOMPARE(m_commands, QStringList({"silent on", "bad"}));
    }

    void informsBeforeItSaysOk()
    {
        const auto control = listening();
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "help\n"), QByteArray("one\n"));
        QTRY_COMPARE(client.bytesAvailable(), 7);
        QCOMPARE(client.readAll(), QByteArray("two\nok\n"));
    }

    void answersInOnePrintableLine()
    {
        const auto control = listening();
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "bad\x1b[2J\n"), QByteArray("error: it is bad\\x1b[2J\n"));
    }

    void refusesALongCommand_data()
    {
        addRows<int, QByteArray, int>(
            {"size", "answer", "commands"},
            {{"the longest", 4095, "ok\n", 1},
             {"one byte more", 4096, "error: a command has at most 4096 bytes\n", 0},
             {"10 MB", 10000000, "error: a command has at most 4096 bytes\n", 0}});
    }

    void refusesALongCommand()
    {
        QFETCH(int, size);
        const auto control = listening();
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "one\n"), QByteArray("ok\n"));
        m_commands.clear();
        QTEST(answerTo(client, QByteArray(size, 'x') + '\n'), "answer");
        QTEST(static_cast<int>(m_commands.size()), "commands");
        QCOMPARE(answerTo(client, "two\n"), QByteArray("ok\n"));
        QCOMPARE(m_commands.last(), QString("two"));
    }

    void waitsForTheWholeLine()
    {
        const auto control = listening();
        QLocalSocket first;
        first.connectToServer(m_path);
        first.write("on");
        QVERIFY(first.flush() || first.bytesToWrite() == 0);
        // By the time a later client is answered, the first bytes have been seen.
        QLocalSocket second;
        second.connectToServer(m_path);
        QCOMPARE(answerTo(second, "other\n"), QByteArray("ok\n"));
        QCOMPARE(m_commands, QStringList{"other"});
        QCOMPARE(answerTo(first, "e\ntwo\n"), QByteArray("ok\n"));
        QTRY_VERIFY(first.canReadLine());
        QCOMPARE(m_commands, QStringList({"other", "one", "two"}));
    }

    void servesSeveralClients()
    {
        const auto control = listening();
        QLocalSocket first;
        first.connectToServer(m_path);
        QCOMPARE(answerTo(first, "one\n"), QByteArray("ok\n"));
        {
            QLocalSocket second;
            second.connectToServer(m_path);
            QCOMPARE(answerTo(second, "two\n"), QByteArray("ok\n"));
        }
        QCOMPARE(answerTo(first, "three\n"), QByteArray("ok\n"));
    }

    void replacesASocketThatIsNotServed()
    {
        // A server that goes without removing its socket, as a killed process does.
        {
            QLocalServer killed;
            QVERIFY(killed.listen(m_folder->filePath("killed")));
            QVERIFY(QFile::rename(m_folder->filePath("killed"), m_path));
        }
        QVERIFY(QFile::exists(m_path));

        const auto control = listening();
        QVERIFY(control->hasReplacedAnother());
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "one\n"), QByteArray("ok\n"));
    }

    // Whatever the user lets others do with new files.
    void isForItsOwnerAlone()
    {
        const mode_t mask = ::umask(0);
        const auto control = listening();
        ::umask(mask);
        QCOMPARE(QFile::permissions(m_path)
                     & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
                        | QFile::WriteOther | QFile::ExeOther),
                 QFile::Permissions());
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "one\n"), QByteArray("ok\n"));
    }

    void leavesALinkAlone()
    {
        {
            QLocalServer killed;
            QVERIFY(killed.listen(m_folder->filePath("killed")));
            QVERIFY(QFile::rename(m_folder->filePath("killed"), m_folder->filePath("leftover")));
        }
        QVERIFY(QFile::link(m_folder->filePath("leftover"), m_path));
        QString error;
        QVERIFY(!serve()->listen(m_path, &error));
        QVERIFY(QFileInfo(m_path).isSymLink());
    }

    void takesARelativePath()
    {
        {
            QLocalServer killed;
            QVERIFY(killed.listen(m_folder->filePath("killed")));
            QVERIFY(QFile::rename(m_folder->filePath("killed"), m_folder->filePath("relative")));
        }
        const QString here = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder->path()));
        const auto control = serve();
        QString error;
        const bool isListening = control->listen("relative", &error);
        QVERIFY(QDir::setCurrent(here));
        QVERIFY2(isListening, qPrintable(error));
        QVERIFY(QFile::exists(m_folder->filePath("relative")));
    }

    void saysWhyItCannotBeMade_data()
    {
        addRows<QString, QString>({"name", "reason"},
                                  {{"no such folder", "none/control", "No such file or directory"},
                                   {"in a file", "file/control", "Not a directory"},
                                   {"a folder", ".", "it exists"},
                                   {"a long name", QString(200, 'x'), "File name too long"}});
    }

    void saysWhyItCannotBeMade()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        QFile file(m_folder->filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const auto control = serve();
        QString error;
        const QString path = m_folder->filePath(name);
        QVERIFY(!control->listen(path, &error));
        QCOMPARE(error, "cannot make the control socket " + path + ": " + reason);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::System), QStringList("file"));
    }

    void leavesAlone_data()
    {
        addRows<bool>({"isServed"}, {{"a socket that is served", true}, {"a file", false}});
    }

    void leavesAlone()
    {
        QFETCH(bool, isServed);
        QLocalServer other;
        if (isServed) {
            QVERIFY(other.listen(m_path));
        } else {
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("precious");
        }
        QString error;
        {
            const auto control = serve();
            QVERIFY(!control->listen(m_path, &error));
        }
        QCOMPARE(error, "cannot make the control socket " + m_path + ": it exists");
        if (isServed) {
            QLocalSocket client;
            client.connectToServer(m_path);
            QVERIFY(client.waitForConnected(kPatience));
        } else {
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), QByteArray("precious"));
        }
    }

    void removesTheSocketInTheEnd()
    {
        {
            const auto control = listening();
            QVERIFY(QFile::exists(m_path));
        }
        QVERIFY(
            QDir(m_folder->path()).isEmpty(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot));
    }

    void leavesASocketAloneThatAnotherHasMadeSince()
    {
        const auto later = serve();
        {
            const auto control = listening();
            QVERIFY(!control->hasReplacedAnother());
            QVERIFY(QFile::remove(m_path));
            QString error;
            QVERIFY2(later->listen(m_path, &error), qPrintable(error));
        }
        QLocalSocket client;
        client.connectToServer(m_path);
        QCOMPARE(answerTo(client, "one\n"), QByteArray("ok\n"));
    }

private:
    // Refuses the command "bad".
    std::unique_ptr<ControlSocket> serve()
    {
        return std::make_unique<ControlSocket>([this](const QString &command) {
            m_commands << command;
            return ControlAnswer{command.startsWith("bad") ? "it is " + command : QString(),
                                 command == "help" ? QString("one\ntwo\n") : QString()};
        });
    }

    std::unique_ptr<ControlSocket> listening()
    {
        auto control = serve();
        QString error;
        if (!control->listen(m_path, &error)) {
            qFatal("%s", qPrintable(error));
        }
        return control;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    QStringList m_commands;
};

QTEST_GUILESS_MAIN(ControlSocketTest)
#include "tst_controlsocket.moc"
