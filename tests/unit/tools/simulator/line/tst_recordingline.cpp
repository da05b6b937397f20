// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "memoryline.h"
#include "patience.h"
#include "recordingline.h"

#include <csignal>

#include <sys/resource.h>

namespace {

/// No file of this process can grow beyond this size for as long as this object lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(qint64 size)
        : m_handlerBefore(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = static_cast<rlim_t>(size);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handlerBefore);
    }

private:
    void (*m_handlerBefore)(int);
    rlimit m_before{};
};

} // namespace

class RecordingLineTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("recording");
        m_line.reset();
        m_inner = std::make_unique<MemoryLine>();
        m_line = RecordingLine::create(*m_inner, m_path, &m_error);
        QVERIFY2(m_line, qPrintable(m_error));
    }

    void startsTheFileWithItsFormatAndTheTime()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const QList<QByteArray> lines = contents().split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), QByteArray("# Corvane line recording 1"));
        QVERIFY(lines.at(1).startsWith("# started "));
        const auto time =
            QDateTime::fromString(QString::fromUtf8(lines.at(1).mid(10)), Qt::ISODate);
        QVERIFY2(qAbs(now.secsTo(time)) < 60, lines.at(1).constData());
        QCOMPARE(lines.at(2), QByteArray());
    }

    void passesEverythingOn()
    {
        QSignalSpy received(m_line.get(), &CameraLine::bytesReceived);
        QVERIFY(!m_line->isPlugged());
        QVERIFY(m_line->plug(&m_error));
        QVERIFY(m_inner->isPlugged());
        QVERIFY(m_line->isPlugged());
        m_line->write("AB");
        QCOMPARE(m_inner->written(), QByteArray("41 42"));
        m_inner->receive("01 02");
        QCOMPARE(received.size(), 1);
        QCOMPARE(received.at(0).at(0).toByteArray(), QByteArray("\x01\x02"));
        m_line->unplug();
        QVERIFY(!m_inner->isPlugged());
        QVERIFY(!m_line->isPlugged());
        m_inner->breakDown();
        QVERIFY(!m_line->plug(&m_error));
        QCOMPARE(m_error, QString("broken"));
    }

    void keepsEachEventAtOnceInItsOrder()
    {
        // A camera that answers at once.
        connect(m_line.get(), &CameraLine::bytesReceived, m_line.get(),
                [this](const QByteArray &bytes) { m_line->write("re: " + bytes); });
        QVERIFY(m_line->plug(&m_error));
        QStringList expected{"plugged"};
        QCOMPARE(events(), expected);
        m_inner->receive("FF 0A");
        expected << "host   FF 0A"
                 << "camera 72 65 3A 20 FF 0A";
        QCOMPARE(events(), expected);
        m_line->write(QByteArray(1, '\0'));
        expected << "camera 00";
        QCOMPARE(events(), expected);
        m_line->unplug();
        expected << "unplugged";
        QCOMPARE(events(), expected);
        QVERIFY(m_line->plug(&m_error));
        expected << "plugged";
        QCOMPARE(events(), expected);
    }

    void tellsTheTimeSinceTheFirstEvent()
    {
        QElapsedTimer timer;
        timer.start();
        QTRY_VERIFY(timer.hasExpired(300));
        timer.start();
        QVERIFY(m_line->plug(&m_error));
        QElapsedTimer sincePlug;
        sincePlug.start();
        QTRY_VERIFY(sincePlug.hasExpired(50));
        m_line->write("x");
        const qint64 elapsed = timer.nsecsElapsed() / 1000;
        const auto recorded = Recording::parse(contents(), &m_error);
        QVERIFY2(recorded, qPrintable(m_error));
        QCOMPARE(recorded->size(), 2);
        QCOMPARE(recorded->at(0).time.count(), 0);
        VERIFY_AT_LEAST(recorded->at(1).time.count(), 50'000);
        VERIFY_AT_LEAST(elapsed, recorded->at(1).time.count());
    }

    void doesNotKeepWhatDoesNotPass()
    {
        m_line->write("unplugged");
        m_line->unplug();
        QCOMPARE(events(), QStringList());
        m_inner->breakDown();
        QVERIFY(!m_line->plug(&m_error));
        QCOMPARE(events(), QStringList());
    }

    void leavesAFileAloneThatExists()
    {
        const QString path = m_folder->filePath("old");
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        QCOMPARE(old.write("of yesterday"), qint64(12));
        old.close();
        QVERIFY(!RecordingLine::create(*m_inner, path, &m_error));
        QCOMPARE(
            m_error,
            QString("cannot record in %1: it exists, and what is in it would be lost").arg(path));
        QCOMPARE(contents(path), QByteArray("of yesterday"));
    }

    void refusesAFileThatCannotBeMade()
    {
        QString path = m_folder->filePath("no/such/folder");
        QVERIFY(!RecordingLine::create(*m_inner, path, &m_error));
        QCOMPARE(m_error, QString("cannot record in %1: No such file or directory").arg(path));

        const FileSizeLimit limit(10);
        path = m_folder->filePath("full");
        QVERIFY(!RecordingLine::create(*m_inner, path, &m_error));
        QCOMPARE(m_error, QString("cannot record in %1: File too large").arg(path));
        QVERIFY(!QFile::exists(path));
    }

    void saysOnceThatTheFileCannotBeWrittenAndGoesOn()
    {
        QSignalSpy failed(m_line.get(), &RecordingLine::failed);
        QSignalSpy received(m_line.get(), &CameraLine::bytesReceived);
        QVERIFY(m_line->plug(&m_error));
        const QByteArray before = contents();
        {
            // Room for part of an event.
            const FileSizeLimit limit(before.size() + 10);
            m_line->write("lost");
            QCOMPARE(failed.size(), 1);
            QCOMPARE(failed.at(0).at(0).toString(),
                     QString("cannot go on recording in %1: File too large").arg(m_path));
        }
        m_inner->receive("01");
        m_line->unplug();
        QCOMPARE(failed.size(), 1);
        QCOMPARE(m_inner->written(), QByteArray("6C 6F 73 74"));
        QCOMPARE(received.size(), 1);
        QVERIFY(!m_inner->isPlugged());
        QCOMPARE(contents(), before);
    }

private:
    /// The lines of the file from the first event on, without their times.
    QStringList events() const
    {
        QStringList events;
        const QStringList lines = QString::fromUtf8(contents()).split('\n');
        for (const QString &line : lines) {
            if (!line.isEmpty() && !line.startsWith('#')) {
                events << line.mid(line.indexOf(' ') + 1);
            }
        }
        return events;
    }

    QByteArray contents() const { return contents(m_path); }
    static QByteArray contents(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    std::unique_ptr<MemoryLine> m_inner;
    std::unique_ptr<RecordingLine> m_line;
    QString m_error;
};

QTEST_GUILESS_MAIN(RecordingLineTest)
#include "tst_recordingline.moc"
