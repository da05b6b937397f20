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

    void replacesASocketThatNobodyServes()
    {
        // A server that goes without removing its socket, as a killed process does.
        {
            QLocalServer killed;
            QVERIFY(killed.listen(m_folder->filePath("killed")));
            QVERIFY(QFile::rename(m_folder->filePath("killed"), m_path));
        }
        QVERIFY(QFile::exists(m_path));

        const auto control = listening();
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
        QVERIFY(!QFile::exists(m_path));
    }

private:
    // Refuses the command "bad".
    std::unique_ptr<ControlSocket> serve()
    {
        return std::make_unique<ControlSocket>([this](const QString &command) {
            m_commands << command;
            return command == "bad" ? QString("it is bad") : QString();
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
